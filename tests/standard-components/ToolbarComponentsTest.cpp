// "ToolbarComponents.plist": every entry the toolbar offers can be added.

#include "StandardComponentsSupport.h"

#include "plist/PropertyList.h"
#include "quartz/QuartzStrings.h"

#include <QFileInfo>

#include <set>

using plist::Value;

namespace {

QString str(const Value& v) { return quartz::toQt(v.string()); }

void checkEntry(const Value& entry, std::set<QString>& identifiers)
{
    const QString identifier = str(entry.value("identifier"));
    SCOPED_TRACE(identifier.toStdString());
    ASSERT_TRUE(entry.isDictionary());
    EXPECT_FALSE(identifier.isEmpty());
    EXPECT_TRUE(identifiers.insert(identifier).second) << "identifiers name toolbar items: they must be unique";
    EXPECT_FALSE(str(entry.value("title")).isEmpty());
    EXPECT_FALSE(str(entry.value("icon")).isEmpty());
    const QString component = str(entry.value("component"));
    EXPECT_TRUE(QFileInfo::exists(stdtest::pathOf(component + QStringLiteral(".qtz")))) << component.toStdString();

    if (const Value* type = entry.find("type")) {
        EXPECT_TRUE(type->string() == "IMAGE" || type->string() == "MOVIE_PATH");
        // The chosen file fills the component's input "key".
        const QString key = str(entry.value("key"));
        const auto composition = stdtest::loadRuntime(component + QStringLiteral(".qtz"));
        ASSERT_TRUE(composition);
        const runtime::PortDescription* input = composition->input(key);
        ASSERT_TRUE(input) << key.toStdString();
        if (type->string() == "IMAGE") {
            EXPECT_EQ(key, QStringLiteral("Image"));
            EXPECT_EQ(input->type, runtime::PortType::Image);
        }
    }
    if (const Value* width = entry.find("width")) {
        EXPECT_TRUE(width->isNumber());
    }
    if (const Value* subcomponents = entry.find("subcomponents")) {
        ASSERT_TRUE(subcomponents->isArray());
        EXPECT_FALSE(subcomponents->array().empty());
        for (const Value& sub : subcomponents->array()) {
            if (sub.isString()) {
                EXPECT_EQ(sub.string(), "SEPARATOR");
            }
            else checkEntry(sub, identifiers);
        }
    }
}

}  // namespace

TEST(ToolbarComponents, EveryEntryNamesAFileOfTheFolder)
{
    std::string error;
    const auto list = plist::readFile(stdtest::pathOf(QStringLiteral("ToolbarComponents.plist")).toStdString(), &error);
    ASSERT_TRUE(list) << error;
    ASSERT_TRUE(list->isArray());
    std::set<QString> identifiers;
    std::set<QString> components;
    for (const Value& entry : list->array()) {
        checkEntry(entry, identifiers);
        components.insert(str(entry.value("component")));
        for (const Value& sub : entry.value("subcomponents").array()) components.insert(str(sub.value("component")));
    }
    // What the toolbar must offer at least.
    for (const char* component : {"Text", "LowerThird", "ImageComponent", "Box", "Clock", "Ticker"})
        EXPECT_TRUE(components.count(QString::fromLatin1(component))) << component;
}
