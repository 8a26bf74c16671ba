#include "inspector/AttributeEditorFactory.h"

#include "inspector/CheckboxAttributeEditor.h"
#include "inspector/ColourAttributeEditor.h"
#include "inspector/FilePathAttributeEditor.h"
#include "inspector/FontAttributeEditor.h"
#include "inspector/ImageAttributeEditor.h"
#include "inspector/MenuAttributeEditor.h"
#include "inspector/NumberAttributeEditor.h"
#include "inspector/StyledTextAttributeEditor.h"
#include "inspector/TextAttributeEditor.h"

#include <map>

namespace inspector {

namespace {

using Maker = AttributeEditor* (*)(const EditorOptions&);

template <class Editor> AttributeEditor* make(const EditorOptions& options) { return new Editor(options); }

AttributeEditor* makeInteger(const EditorOptions& options)
{
    // Indices count from 0.
    EditorOptions whole = options;
    whole.minimum = std::max(0.0, options.minimum);
    return new NumberAttributeEditor(whole, true);
}

AttributeEditor* makeNumber(const EditorOptions& options) { return new NumberAttributeEditor(options, false); }

const std::map<model::EditorKind, Maker>& makers()
{
    using K = model::EditorKind;
    // Live video and rich fonts have no row: the playout feeds the one, and
    // the other is styled by the text's own controls.
    static const std::map<K, Maker> table{
        {K::Text, make<TextAttributeEditor>},
        {K::Integer, makeInteger},
        {K::Number, makeNumber},
        {K::Checkbox, make<CheckboxAttributeEditor>},
        {K::Menu, make<MenuAttributeEditor>},
        {K::Colour, make<ColourAttributeEditor>},
        {K::Image, make<ImageAttributeEditor>},
        {K::Font, make<FontAttributeEditor>},
        {K::StyledText, make<StyledTextAttributeEditor>},
        {K::FilePath, make<FilePathAttributeEditor>},
    };
    return table;
}

}  // namespace

AttributeEditor* makeAttributeEditor(model::EditorKind kind, const EditorOptions& options)
{
    const auto found = makers().find(kind);
    return found == makers().end() ? nullptr : found->second(options);
}

AttributeEditor* makeAttributeEditorForType(int typeCode, const EditorOptions& options)
{
    // A code no entry has (from a newer document) gets no row rather than
    // the table's fallback.
    if (typeCode < 0 || typeCode >= int(model::attributeTypes().size())) return nullptr;
    return makeAttributeEditor(model::attributeType(typeCode).editor, options);
}

}  // namespace inspector
