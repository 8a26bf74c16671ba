// Loading compositions: published ports and their types, macros, virtual
// patches, stored values, and every kind of damage reported, never fatal.

#include "CompositionBuilder.h"

#include "plist/PropertyList.h"

#include <gtest/gtest.h>

using runtime::Composition;
using runtime::PortType;
using test::Node;

namespace {

plist::Dictionary attributes(std::initializer_list<std::pair<const char*, const char*>> labels)
{
    plist::Dictionary portAttributes;
    for (const auto& [key, name] : labels) {
        plist::Dictionary entry;
        entry["name"] = name;
        portAttributes[key] = plist::Value(std::move(entry));
    }
    plist::Dictionary extras;
    extras["portAttributes"] = plist::Value(std::move(portAttributes));
    return extras;
}

TEST(CompositionLoading, PublishedInputsKeepFileOrderTypesLabelsAndDefaults)
{
    Node numberSplitter("QCSplitter", "Splitter_1");
    numberSplitter.state("portClass", "QCNumberPort").state("inputMin", 0.0).state("inputMax", 10.0).custom("input", 2.5);
    Node indexSplitter("QCSplitter", "Splitter_2");
    plist::Array labels{plist::Value("Left"), plist::Value("-"), plist::Value("Right")};
    indexSplitter.state("portClass", "QCIndexPort").state("indexLabels", plist::Value(labels)).state("inputMax", 4294967296.0);
    Node sprite("QCSprite", "Sprite_1");
    sprite.input("inputColor", test::colorValue(1, 0, 0));
    Node r = test::root();
    r.child(numberSplitter).child(indexSplitter).child(sprite);
    r.publishInput("Zeta", "Splitter_1", "input").publishInput("Alpha", "Splitter_2", "input");
    r.publishInput("Tint", "Sprite_1", "inputColor").publishInput("Picture", "Sprite_1", "inputImage");
    auto extras = attributes({{"Zeta", "Zeta Label"}});
    plist::Dictionary params;
    params["Alpha"] = 1;
    extras["inputParameters"] = plist::Value(std::move(params));
    auto c = test::load(r, std::move(extras));
    ASSERT_TRUE(c);

    EXPECT_EQ(c->inputKeys(), QStringList({"Zeta", "Alpha", "Tint", "Picture"}));
    const auto* zeta = c->input("Zeta");
    EXPECT_EQ(zeta->typeName(), "QCPortTypeNumber");
    EXPECT_EQ(zeta->name, "Zeta Label");
    EXPECT_DOUBLE_EQ(zeta->defaultValue.toDouble(), 2.5);
    EXPECT_EQ(zeta->minimum, 0.0);
    EXPECT_EQ(zeta->maximum, 10.0);

    const auto* alpha = c->input("Alpha");
    EXPECT_EQ(alpha->type, PortType::Index);
    EXPECT_EQ(alpha->name, "Alpha");  // no label anywhere: the key
    EXPECT_EQ(alpha->menuItems, QStringList({"Left", "-", "Right"}));
    EXPECT_FALSE(alpha->maximum.has_value());  // 2^32 means "no maximum"
    EXPECT_EQ(alpha->defaultValue.toInt(), 1);  // input parameters win

    EXPECT_EQ(c->input("Tint")->type, PortType::Color);
    EXPECT_EQ(c->input("Tint")->defaultValue.value<QColor>(), QColor(Qt::red));
    EXPECT_EQ(c->input("Picture")->typeName(), "QCPortTypeImage");
}

TEST(CompositionLoading, InputTypesResolveThroughNestedMacros)
{
    Node splitter("QCSplitter", "Splitter_1");
    splitter.state("portClass", "QCBooleanPort");
    Node inner("QCPatch", "Patch_2");
    inner.child(splitter).publishInput("Flag", "Splitter_1", "input");
    Node outer("QCPatch", "Patch_1");
    outer.child(inner).publishInput("Flag", "Patch_2", "Flag");
    Node r = test::root();
    r.child(outer).publishInput("Switch", "Patch_1", "Flag");
    auto c = test::load(r);
    ASSERT_TRUE(c);
    EXPECT_EQ(c->input("Switch")->type, PortType::Boolean);
    EXPECT_TRUE(c->problems().isEmpty()) << test::problemsText(*c).toStdString();
}

TEST(CompositionLoading, VirtualPatchesExpandWithTheirDefaultsAndNodeValues)
{
    // "/double": a virtual patch whose input "X" feeds a Math ×2.
    Node math("QCMath", "Math_1");
    math.state("operationCount", 1).custom("operation_1", 2).custom("operand_1", 2.0);
    Node vroot = test::root();
    vroot.child(math).publishInput("X", "Math_1", "inputValue").publishOutput("Y", "Math_1", "outputValue");
    plist::Dictionary definition;
    definition["rootPatch"] = vroot.value();
    plist::Dictionary defaults;
    defaults["X"] = 3.0;
    definition["inputParameters"] = plist::Value(defaults);
    plist::Dictionary virtualPatches;
    virtualPatches["/double"] = plist::Value(definition);

    Node first("/double", "Patch_1");  // takes the definition's default
    Node second("/double", "Patch_2");
    second.custom("X", 5.0);  // overrides it
    Node r = test::root();
    r.child(first).child(second).publishOutput("A", "Patch_1", "Y").publishOutput("B", "Patch_2", "Y");
    plist::Dictionary extras;
    extras["virtualPatches"] = plist::Value(virtualPatches);
    auto c = test::load(r, extras);
    ASSERT_TRUE(c);
    EXPECT_TRUE(c->problems().isEmpty()) << test::problemsText(*c).toStdString();
    EXPECT_EQ(c->outputKeys(), QStringList({"A", "B"}));
    runtime::Renderer renderer(c, QSize(8, 8));
    renderer.render(0);
    EXPECT_DOUBLE_EQ(renderer.outputValue("A").toDouble(), 6.0);
    EXPECT_DOUBLE_EQ(renderer.outputValue("B").toDouble(), 10.0);
    EXPECT_EQ(c->patchCounts().at("/double"), 2);
    EXPECT_EQ(c->patchCounts().at("QCMath"), 1);  // the definition is counted once
}

TEST(CompositionLoading, SelfReferencingVirtualPatchIsReportedAndStops)
{
    Node vroot = test::root();
    vroot.child(Node("/loop", "Patch_1"));
    plist::Dictionary definition;
    definition["rootPatch"] = vroot.value();
    plist::Dictionary virtualPatches;
    virtualPatches["/loop"] = plist::Value(definition);
    plist::Dictionary extras;
    extras["virtualPatches"] = plist::Value(virtualPatches);
    Node r = test::root();
    r.child(Node("/loop", "Patch_1")).child(Node("/missing", "Patch_2"));
    auto c = test::load(r, extras);
    ASSERT_TRUE(c);
    const QString problems = test::problemsText(*c);
    EXPECT_TRUE(problems.contains("\"/loop\" contains itself")) << problems.toStdString();
    EXPECT_TRUE(problems.contains("\"/missing\" is not defined")) << problems.toStdString();
    EXPECT_EQ(c->unsupportedClasses(), QStringList({"/missing"}));
}

TEST(CompositionLoading, BrokenGraphsAreReportedWithTheirPlace)
{
    Node a("QCMath", "Math_1");
    Node b("QCMath", "Math_2");
    Node inner("QCPatch", "Patch_1");
    inner.child(Node("QCSplitter", "Splitter_1"));
    inner.connect("Splitter_1", "output", "Nowhere_1", "input");
    inner.publishInput("Ghost", "Splitter_1", "noSuchPort");
    Node r = test::root();
    r.child(a).child(b).child(inner).child(Node("QCMath", "Math_1"));  // a duplicate key
    r.connect("Math_1", "outputValue", "Math_2", "inputValue");
    r.connect("Math_2", "outputValue", "Math_1", "inputValue");  // closes a cycle
    r.connect("Math_1", "noOutput", "Math_2", "operand_1");
    r.connect("Math_1", "outputValue", "Missing_1", "inputValue");
    auto c = test::load(r);
    ASSERT_TRUE(c);
    const QString p = test::problemsText(*c);
    EXPECT_TRUE(p.contains("root: connection Math_2.outputValue → Math_1.inputValue closes a cycle")) << p.toStdString();
    EXPECT_TRUE(p.contains("connection_3 names a missing port Math_1.noOutput")) << p.toStdString();
    EXPECT_TRUE(p.contains("connection_4 names a missing node \"Missing_1\"")) << p.toStdString();
    EXPECT_TRUE(p.contains("Patch_1: connection_1 names a missing node \"Nowhere_1\"")) << p.toStdString();
    EXPECT_TRUE(p.contains("Patch_1: published input \"Ghost\" names a missing port Splitter_1.noSuchPort")) << p.toStdString();
    EXPECT_TRUE(p.contains("duplicate key, renamed Math_3")) << p.toStdString();
    // A cycle is never followed: rendering terminates.
    runtime::Renderer renderer(c, QSize(4, 4));
    renderer.render(0);
    renderer.render(1);
}

TEST(CompositionLoading, UnknownClassesLoadInertAndAreListed)
{
    Node unknown("FBFancyPatch", "FBFancyPatch_1");
    unknown.input("inputWhatever", 3.0);
    Node filter("QCImageFilter", "ShadedMaterial_1");
    filter.identifier("CIShadedMaterial");
    Node plugIn("QCPlugInPatch", "PlugInPatch_1");
    plugIn.identifier("SimpleTextPlugIn");
    Node math("QCMath", "Math_1");
    Node r = test::root();
    r.child(unknown).child(filter).child(plugIn).child(math);
    // Connections to ports of unknown patches are kept, not reported.
    r.connect("FBFancyPatch_1", "outputAnything", "Math_1", "inputValue");
    r.publishInput("Whatever", "FBFancyPatch_1", "inputWhatever");
    auto c = test::load(r);
    ASSERT_TRUE(c);
    EXPECT_EQ(c->unsupportedClasses(), QStringList({"FBFancyPatch", "QCImageFilter/CIShadedMaterial", "QCPlugInPatch/SimpleTextPlugIn"}));
    EXPECT_EQ(c->patchCounts().at("QCImageFilter"), 1);
    // The type of an untyped port comes from its stored value.
    EXPECT_EQ(c->input("Whatever")->type, PortType::Number);
    EXPECT_FALSE(test::problemsText(*c).contains("names a missing port"));
    runtime::Renderer renderer(c, QSize(4, 4));
    renderer.render(0);
}

TEST(CompositionLoading, UnreadableDataFailsWithAClearError)
{
    QString error;
    EXPECT_FALSE(Composition::loadData(QByteArray(), &error));
    EXPECT_EQ(error, "empty file");
    EXPECT_FALSE(Composition::loadData("bplist00garbage", &error));
    EXPECT_TRUE(error.startsWith("not a property list")) << error.toStdString();
    EXPECT_FALSE(Composition::fromPlist(plist::Value("a string"), &error));
    EXPECT_TRUE(error.contains("not a dictionary")) << error.toStdString();
    EXPECT_FALSE(Composition::fromPlist(plist::Value::emptyDictionary(), &error));
    EXPECT_TRUE(error.contains("no root patch")) << error.toStdString();
    EXPECT_FALSE(Composition::loadFile("/nonexistent/file.qtz", &error));
    EXPECT_TRUE(error.contains("cannot open")) << error.toStdString();
}

TEST(CompositionLoading, LoadsXmlAndBinaryBytes)
{
    Node r = test::root();
    r.child(Node("QCSplitter", "Splitter_1").state("portClass", "QCStringPort").custom("input", "hi"));
    r.publishInput("Text", "Splitter_1", "input");
    const plist::Value doc = test::document(r);
    for (const plist::Format format : {plist::Format::Xml, plist::Format::Binary}) {
        const auto bytes = plist::write(doc, format);
        ASSERT_TRUE(bytes);
        QString error;
        auto c = Composition::loadData(QByteArray(bytes->data(), qsizetype(bytes->size())), &error);
        ASSERT_TRUE(c) << error.toStdString();
        EXPECT_EQ(c->input("Text")->defaultValue.toString(), "hi");
    }
}

TEST(CompositionLoading, DamagedNodeShapesNeverCrash)
{
    // Every place that should hold a dictionary or array holds a string.
    plist::Dictionary state;
    state["nodes"] = plist::Array{plist::Value("not a node"), plist::Value(plist::Dictionary{{"class", plist::Value(5)}})};
    state["connections"] = plist::Array{plist::Value(1)};
    state["publishedInputPorts"] = "nope";
    state["publishedOutputPorts"] = plist::Array{plist::Value::emptyDictionary()};
    state["ivarInputPortStates"] = plist::Array{};
    plist::Dictionary rootPatch;
    rootPatch["class"] = "QCPatch";
    rootPatch["state"] = plist::Value(state);
    plist::Dictionary doc;
    doc["rootPatch"] = plist::Value(rootPatch);
    doc["virtualPatches"] = "nope";
    doc["inputParameters"] = plist::Array{};
    QString error;
    auto c = Composition::fromPlist(plist::Value(doc), &error);
    ASSERT_TRUE(c) << error.toStdString();
    EXPECT_TRUE(test::problemsText(*c).contains("node without a class"));
    runtime::Renderer renderer(c, QSize(4, 4));
    renderer.render(0);
}

TEST(CompositionLoading, ExponentialVirtualPatchExpansionIsCapped)
{
    // Each level uses the next one twice: 2^40 nodes if expanded naively.
    plist::Dictionary virtualPatches;
    for (int level = 0; level < 40; ++level) {
        Node vroot = test::root();
        if (level < 39) {
            const std::string next = "/level" + std::to_string(level + 1);
            vroot.child(Node(next, "A")).child(Node(next, "B"));
        } else {
            vroot.child(Node("QCMath", "Math_1"));
        }
        plist::Dictionary definition;
        definition["rootPatch"] = vroot.value();
        virtualPatches["/level" + std::to_string(level)] = plist::Value(definition);
    }
    plist::Dictionary extras;
    extras["virtualPatches"] = plist::Value(virtualPatches);
    Node r = test::root();
    r.child(Node("/level0", "Top"));
    auto c = test::load(r, extras);
    ASSERT_TRUE(c);
    EXPECT_TRUE(test::problemsText(*c).contains("patches; the rest are left out")) << test::problemsText(*c).toStdString();
}

TEST(CompositionLoading, AttributesComeFromTheTopLevel)
{
    plist::Dictionary extras;
    extras["name"] = "Lower Third";
    extras["description"] = "Two lines of text";
    extras["categories"] = plist::Array{plist::Value("Text")};
    auto c = test::load(test::root(), extras);
    ASSERT_TRUE(c);
    EXPECT_EQ(c->name(), "Lower Third");
    EXPECT_EQ(c->attributes().value("description").toString(), "Two lines of text");
    EXPECT_EQ(c->attributes().value("categories").toStringList(), QStringList({"Text"}));
}

}  // namespace
