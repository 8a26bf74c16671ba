#pragma once
// Chooses the drawing backend: OpenGL where a context can be made (on the
// GUI thread of a GUI application with a display) on a hardware renderer,
// raster otherwise or when asked for. Asked for explicitly, OpenGL is used
// on a software renderer too (Mesa's llvmpipe: tests, comparisons). The
// choice is logged once per process and kind.

#include "runtime/Backend.h"

#include <QString>

#include <memory>
#include <optional>

namespace runtime {

enum class BackendKind { Raster, OpenGL };
enum class BackendPreference { Automatic, Raster, OpenGL };

// "gl", "opengl", "raster", "auto"; nullopt for anything else.
std::optional<BackendPreference> backendPreferenceFromName(const QString& name);
QString backendName(BackendKind kind);

// The process's preference, used where a caller does not pass its own (the
// command line's --backend sets it). Automatic unless set.
void setDefaultBackendPreference(BackendPreference preference);
BackendPreference defaultBackendPreference();

// Sets the process's preference for its own lifetime (a command run
// in-process, a test).
class ScopedBackendPreference {
public:
    explicit ScopedBackendPreference(std::optional<BackendPreference> preference) : previous_(defaultBackendPreference())
    {
        if (preference) setDefaultBackendPreference(*preference);
    }
    ~ScopedBackendPreference() { setDefaultBackendPreference(previous_); }
    ScopedBackendPreference(const ScopedBackendPreference&) = delete;
    ScopedBackendPreference& operator=(const ScopedBackendPreference&) = delete;

private:
    BackendPreference previous_;
};

struct MadeBackend {
    std::unique_ptr<Backend> backend;
    BackendKind kind = BackendKind::Raster;
    QString fallbackReason;  // why OpenGL was asked for or tried and not made
};
// OpenGL falls back to raster, with the reason, when no context can be made
// (and, for Automatic, when the context draws in software).
bool isSoftwareRenderer(const QString& rendererName);
MadeBackend makeBackend(BackendPreference preference = defaultBackendPreference());

}  // namespace runtime
