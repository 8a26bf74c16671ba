#pragma once
// Seconds shown and typed as timecode. The pane that makes it supplies the
// conversions in the document's frame rate, so the editor itself stays free
// of the model. Text that is no timecode is refused: the field shows the
// value again and nothing is written.

#include "inspector/AttributeEditor.h"

#include <functional>
#include <optional>

class QLineEdit;

namespace inspector {

class TimecodeEditor : public AttributeEditor {
    Q_OBJECT
public:
    using Format = std::function<QString(double seconds)>;
    using Parse = std::function<std::optional<double>(const QString& text)>;

    // `noneBelow`: values under it show as empty with `noneText` as the
    // placeholder (a poster frame of -1 is "None").
    TimecodeEditor(const EditorOptions& options, Format format, Parse parse,
                   std::optional<double> noneBelow = std::nullopt, const QString& noneText = QString());

    void showValue(const QVariant& value, bool mixed) override;
    QWidget* widget() const override;
    QLineEdit* field() const { return field_; }

private:
    void commit();

    QLineEdit* field_;
    Format format_;
    Parse parse_;
    std::optional<double> noneBelow_;
    QString noneText_;
};

}  // namespace inspector
