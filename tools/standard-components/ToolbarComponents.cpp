// "ToolbarComponents.plist": the document window's component buttons and
// pull-down menus. "component" names a file of this folder without its
// extension; "type" IMAGE asks for a file first and fills the input "key".

#include "FileBuilders.h"

namespace standardcomponents {

namespace {

using plist::Value;

Value entry(const char* identifier, const char* title, const char* component, const char* icon)
{
    Value e = Value::emptyDictionary();
    e.set("identifier", identifier);
    e.set("title", title);
    e.set("component", component);
    e.set("icon", icon);
    return e;
}

}  // namespace

Value makeToolbarComponents()
{
    Value text = entry("Text", "Text", "Text", "Text");
    text.set("subcomponents", Value(plist::Array{
                                  entry("Text.Plain", "Text", "Text", "Text"),
                                  entry("Text.LowerThird", "Lower Third", "LowerThird", "LowerThird"),
                                  Value("SEPARATOR"),
                                  entry("Text.Ticker", "Ticker", "Ticker", "Ticker"),
                              }));
    text.set("width", 0);

    Value image = entry("Image", "Image", "ImageComponent", "Image");
    image.set("type", "IMAGE");
    image.set("key", "Image");

    return Value(plist::Array{
        std::move(text),
        std::move(image),
        entry("Box", "Box", "Box", "Box"),
        entry("Clock", "Clock", "Clock", "Clock"),
    });
}

}  // namespace standardcomponents
