#include "runtime/BackendFactory.h"

#include "runtime/RasterBackend.h"
#include "runtime/gl/GlBackend.h"

#include <QLoggingCategory>

#include <atomic>
#include <mutex>

Q_LOGGING_CATEGORY(lcBackend, "velloran.backend")

namespace runtime {

namespace {
std::atomic<BackendPreference> preferred{BackendPreference::Automatic};

// The software renderer an automatic choice found, kept: the machine does
// not change, and making a context only to look costs tens of milliseconds
// each time a player or renderer is made.
std::mutex softwareMutex;
QString softwareRendererFound;

QString knownSoftwareRenderer()
{
    std::lock_guard lock(softwareMutex);
    return softwareRendererFound;
}

void logChoiceOnce(const MadeBackend& made)
{
    static std::once_flag raster, opengl;
    std::call_once(made.kind == BackendKind::OpenGL ? opengl : raster, [&] {
        if (made.kind == BackendKind::OpenGL)
            qCInfo(lcBackend).noquote() << QStringLiteral("drawing with OpenGL (%1)")
                                               .arg(static_cast<GlBackend&>(*made.backend).context().rendererName());
        else if (made.fallbackReason.isEmpty())
            qCInfo(lcBackend).noquote() << QStringLiteral("drawing with the raster backend");
        else
            qCInfo(lcBackend).noquote() << QStringLiteral("drawing with the raster backend: %1").arg(made.fallbackReason);
    });
}
}  // namespace

std::optional<BackendPreference> backendPreferenceFromName(const QString& name)
{
    const QString n = name.toLower();
    if (n == QLatin1String("gl") || n == QLatin1String("opengl")) return BackendPreference::OpenGL;
    if (n == QLatin1String("raster")) return BackendPreference::Raster;
    if (n == QLatin1String("auto")) return BackendPreference::Automatic;
    return std::nullopt;
}

QString backendName(BackendKind kind)
{
    return kind == BackendKind::OpenGL ? QStringLiteral("gl") : QStringLiteral("raster");
}

void setDefaultBackendPreference(BackendPreference preference)
{
    preferred.store(preference);
}

BackendPreference defaultBackendPreference()
{
    return preferred.load();
}

bool isSoftwareRenderer(const QString& name)
{
    for (const char* software : {"llvmpipe", "softpipe", "swrast", "software"})
        if (name.contains(QLatin1String(software), Qt::CaseInsensitive)) return true;
    return false;
}

MadeBackend makeBackend(BackendPreference preference)
{
    MadeBackend made;
    const QString knownSoftware = preference == BackendPreference::Automatic ? knownSoftwareRenderer() : QString();
    if (!knownSoftware.isEmpty()) {
        made.fallbackReason = QStringLiteral("OpenGL is software only here (%1)").arg(knownSoftware);
    } else if (preference != BackendPreference::Raster) {
        if (auto gl = GlBackend::make(&made.fallbackReason)) {
            const QString renderer = gl->context().rendererName();
            // A software rasterizer fills pixels far slower than the raster
            // backend, which also keeps pictures of what stands still.
            if (preference == BackendPreference::Automatic && isSoftwareRenderer(renderer)) {
                made.fallbackReason = QStringLiteral("OpenGL is software only here (%1)").arg(renderer);
                std::lock_guard lock(softwareMutex);
                softwareRendererFound = renderer;
            } else {
                made.backend = std::move(gl);
                made.kind = BackendKind::OpenGL;
            }
        }
    }
    if (!made.backend) made.backend = std::make_unique<RasterBackend>();
    logChoiceOnce(made);
    return made;
}

}  // namespace runtime
