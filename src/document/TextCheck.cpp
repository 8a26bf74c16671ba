#include "document/TextCheck.h"

#include "document/FieldSchema.h"
#include "model/Attribute.h"
#include "model/Composition.h"
#include "model/QuartzComponent.h"
#include "model/StopFrame.h"
#include "runtime/Renderer.h"

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>

#include <algorithm>

namespace document {

namespace {

// The rectangle of the pixels where two pictures of the same size differ:
// the text, when one has it and the other has none. Null when none differ.
QRect differingPixels(const QImage& withText, const QImage& without)
{
    if (withText.isNull() || without.size() != withText.size()) return {};
    const QImage a = withText.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage b = without.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int left = a.width(), right = -1, top = a.height(), bottom = -1;
    for (int y = 0; y < a.height(); ++y) {
        const auto* ra = reinterpret_cast<const quint32*>(a.constScanLine(y));
        const auto* rb = reinterpret_cast<const quint32*>(b.constScanLine(y));
        if (std::equal(ra, ra + a.width(), rb)) continue;
        for (int x = 0; x < a.width(); ++x) {
            if (ra[x] == rb[x]) continue;
            left = std::min(left, x), right = std::max(right, x);
            top = std::min(top, y), bottom = std::max(bottom, y);
        }
    }
    return right < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

// Frames this many times the component's size show how far a text reaches.
constexpr int kRoomFactor = 4;

// When the component is fully on screen: held at the first stop frame in
// its span, else halfway through it.
double fullyOnScreen(const model::Composition& composition, const model::QuartzComponent& component)
{
    std::vector<double> stops;
    for (const model::StopFrame* s : composition.stopFrames()) stops.push_back(s->timepoint());
    std::sort(stops.begin(), stops.end());
    for (double t : stops)
        if (t >= component.startTime() && t <= component.endTime()) return t;
    return std::clamp((component.startTime() + component.endTime()) / 2, 0.0, std::max(composition.duration(), 0.0));
}

// The font the field's text is set in: the component's font attribute of
// the same name ("Text" and "Text_Font_Name"), else its first one.
QFont fontOf(const model::QuartzComponent& component, const model::Attribute& field, double time)
{
    const model::Attribute* chosen = nullptr;
    for (const model::Attribute* a : component.attributes()) {
        if (a->type() != model::kTypeFont) continue;
        if (!chosen || a->key().startsWith(field.key() + QLatin1Char('_'))) chosen = a;
    }
    return chosen ? chosen->valueAtTime(time).value<QFont>() : QGuiApplication::font();
}

bool fallsBack(const QFont& font, const QString& text)
{
    const QFontMetricsF metrics(font);
    for (char32_t c : text.toUcs4())
        if (!QChar::isSpace(c) && !metrics.inFontUcs4(c)) return true;
    return false;
}

class FieldRenderer {
public:
    FieldRenderer(const model::QuartzComponent& component, const model::Attribute& field, double time)
        : component_(component), field_(field), time_(time)
    {
    }

    // The component's own picture with the sample, at a size of its frame
    // scaled by (wide, tall): room to see how far the text reaches.
    QImage render(const QString& sample, int width, int height) const
    {
        runtime::Renderer renderer(component_.loadedComposition(), QSize(std::max(width, 1), std::max(height, 1)));
        for (const model::Attribute* a : component_.attributes())
            a->pushValue(renderer, a == &field_ ? QVariant(sample) : a->valueAtTime(time_));
        renderer.setInputValue(QStringLiteral("inputWidth"), float(width));
        renderer.setInputValue(QStringLiteral("inputHeight"), float(height));
        renderer.render(std::max(time_ - component_.startTime(), 0.0));
        return renderer.outputValue(model::QuartzComponent::previewOutputPort()).value<QImage>();
    }

private:
    const model::QuartzComponent& component_;
    const model::Attribute& field_;
    double time_;
};

double valueAt(const model::QuartzComponent& c, const char* key, double time)
{
    const model::Attribute* a = c.attributeForKey(QLatin1String(key));
    return a ? a->valueAtTime(time).toDouble() : 0.0;
}

TextCheckResult checkOne(const model::QuartzComponent& component, const model::Attribute& field, const QString& id,
                         const QString& sample, double time, const QRectF& titleSafe)
{
    TextCheckResult r;
    r.field = id;
    r.component = component.title();
    r.key = field.key();
    r.sample = sample;
    r.time = time;
    const int w = int(std::lround(valueAt(component, "inputWidth", time)));
    const int h = int(std::lround(valueAt(component, "inputHeight", time)));
    r.room = w;
    r.roomHeight = h;
    const FieldRenderer renderer(component, field, time);
    // The text is what changes between the picture with it and without.
    auto textIn = [&](int width, int height, QImage* keep = nullptr) {
        QImage with = renderer.render(sample, width, height);
        const QRect rect = differingPixels(with, renderer.render(QString(), width, height));
        if (keep) *keep = std::move(with);
        return rect;
    };
    const QRect shown = textIn(w, h, &r.picture);
    // A single line does not wrap: its whole length shows in a wide frame.
    // Any text may run past the bottom: its whole height shows in a tall one.
    const bool singleLine = field.type() != model::kTypeStyledText;
    const QRect wide = singleLine ? textIn(w * kRoomFactor, h) : shown;
    const QRect tall = textIn(w, h * kRoomFactor);
    r.measuredWidth = wide.isNull() ? 0 : wide.width();
    r.measuredHeight = tall.isNull() ? 0 : tall.height();
    r.insideComponent = r.measuredWidth <= w && r.measuredHeight <= h;
    r.fallbackGlyph = fallsBack(fontOf(component, field, time), sample);
    if (!shown.isNull()) {
        // Where the text stands on the canvas (y up), grown about what shows
        // to its full measured size.
        const double x = valueAt(component, "originX", time), y = valueAt(component, "originY", time);
        const QPointF centre(x + shown.center().x() + 0.5, y + (h - shown.center().y() - 0.5));
        const double tw = std::max<double>(r.measuredWidth, shown.width()), th = std::max<double>(r.measuredHeight, shown.height());
        r.textRect = QRectF(centre.x() - tw / 2, centre.y() - th / 2, tw, th);
        r.insideTitleSafe = titleSafe.contains(r.textRect);
    }
    return r;
}

}  // namespace

QStringList defaultTextSamples(const QString& current)
{
    const QString base = current.isEmpty() ? QStringLiteral("Breaking news") : current;
    return {
        base + QLatin1Char(' ') + base,
        QStringLiteral("ÉÀÇÔ ÅÄÖ ŁŚŻ"),
        QStringLiteral("Gypsy jugglers quip: pygmy quagga"),
        QStringLiteral("日本語のテキスト 中文字幕"),
        QStringLiteral("النص العربي للاختبار"),
        QStringLiteral("Donaudampfschifffahrtsgesellschaftskapitänswitwe"),
    };
}

QRectF titleSafeArea(double width, double height)
{
    // The canvas's inner (red) safe frame: 5 % in from each side, 2.5 % from
    // top and bottom.
    return QRectF(0.05 * width, 0.025 * height, 0.9 * width, 0.95 * height);
}

QList<TextCheckResult> checkTextFields(const model::Composition& composition, const QStringList& samples,
                                       const WorkProgress& progress)
{
    struct Field {
        const model::QuartzComponent* component;
        const model::Attribute* attribute;
        QString id;
    };
    const QHash<const model::Attribute*, QString> ids = fieldIds(composition);
    std::vector<Field> fields;
    for (const model::QuartzComponent* component : composition.componentsSortedByZLevel()) {
        if (!component->loadedComposition()) continue;
        for (const model::Attribute* a : component->attributes()) {
            const int type = a->type();
            if (!ids.contains(a) || (type != model::kTypeString && type != model::kTypeStyledText)) continue;
            fields.push_back({component, a, ids.value(a)});
        }
    }
    const QRectF titleSafe = titleSafeArea(composition.width(), composition.height());
    QList<TextCheckResult> results;
    int done = 0;
    const int total = int(fields.size());
    for (const Field& f : fields) {
        if (progress && !progress(done, total)) break;
        const double time = fullyOnScreen(composition, *f.component);
        const QStringList tried = samples.isEmpty() ? defaultTextSamples(f.attribute->valueAtTime(time).toString()) : samples;
        for (const QString& sample : tried) results.append(checkOne(*f.component, *f.attribute, f.id, sample, time, titleSafe));
        ++done;
    }
    if (progress) progress(done, total);
    return results;
}

}  // namespace document
