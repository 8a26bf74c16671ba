#include "quartz/QuartzComposition.h"
#include "quartz/QuartzPatch.h"

#include "../support/PlistPrinting.h"

#include <gtest/gtest.h>

using plist::Value;

namespace {

Value portState(const QuartzPatch& patch, const char* stateKey, const char* port)
{
    return patch.state().value(stateKey).value(port).value("value");
}

QString str(const Value& v) { return QString::fromStdString(v.string()); }

}  // namespace

TEST(QuartzPatch, ChildKeysCountUpPerClassAndSkipTakenOnes)
{
    QuartzPatch root;
    EXPECT_EQ(root.addPatchWithClass(QStringLiteral("QCSprite"))->key(), QStringLiteral("QCSprite_1"));
    EXPECT_EQ(root.addPatchWithClass(QStringLiteral("QCSprite"))->key(), QStringLiteral("QCSprite_2"));
    QuartzPatch* manual = root.addPatchWithClass(QStringLiteral("QCClear"));
    manual->setKey(QStringLiteral("QCSprite_3"));
    EXPECT_EQ(root.addPatchWithClass(QStringLiteral("QCSprite"))->key(), QStringLiteral("QCSprite_4"));
    EXPECT_EQ(root.addPatchWithClass(QStringLiteral("QCClear"))->key(), QStringLiteral("QCClear_1"));
    EXPECT_EQ(root.nodes().size(), 5u);
    EXPECT_EQ(root.nodes().back()->parentPatch(), &root);

    // Only a key spelt exactly as the candidate takes its number; the first
    // gap is filled.
    QuartzPatch other;
    for (const char* key : {"QCMath_1", "QCMath_3", "QCMath_02", "QCMath_x", "QCMathX_2", "QCMath_", "QCMath_99999999999999999999999"})
        other.addPatchWithClass(QStringLiteral("QCClear"))->setKey(QString::fromLatin1(key));
    EXPECT_EQ(other.addPatchWithClass(QStringLiteral("QCMath"))->key(), QStringLiteral("QCMath_2"));
    EXPECT_EQ(other.addPatchWithClass(QStringLiteral("QCMath"))->key(), QStringLiteral("QCMath_4"));
}

TEST(QuartzPatch, OwnPlugInClassesBecomePlugInNodes)
{
    QuartzPatch root;
    QuartzPatch* plugIn = root.addPatchWithClass(QStringLiteral("QLNStopframesPlugIn"));
    EXPECT_EQ(plugIn->patchClass(), QStringLiteral("QCPlugInPatch"));
    EXPECT_EQ(plugIn->identifier(), QStringLiteral("QLNStopframesPlugIn"));
    EXPECT_EQ(plugIn->key(), QStringLiteral("QCPlugInPatch_1"));
}

TEST(QuartzPatch, AddPatchBuildsStateAndReplacesPortStates)
{
    QuartzPatch root;
    Value state = Value::emptyDictionary();
    state.set("clearColorBuffer", true);
    Value oldPorts = Value::emptyDictionary();
    oldPorts.set("inputColor", Value::emptyDictionary());
    state.set("ivarInputPortStates", oldPorts);
    QuartzPatch* clear = root.addPatchWithClass(QStringLiteral("QCClear"), state);
    EXPECT_TRUE(clear->state().value("clearColorBuffer").toBool());
    EXPECT_TRUE(clear->state().value("connections").isDictionary());
    EXPECT_TRUE(clear->state().value("publishedInputPorts").isArray());
    EXPECT_TRUE(clear->state().value("ivarInputPortStates").dictionary().empty())
        << "the given port values replace any in the state";

    QuartzPatch* math = root.addPatchWithClass(QStringLiteral("QCMath"), Value(), {{"inputValue", Value(2.5)}});
    EXPECT_EQ(portState(*math, "ivarInputPortStates", "inputValue"), Value(2.5));
}

TEST(QuartzPatch, ConnectionNamesFollowTheLargestNumber)
{
    QuartzPatch root;
    root.addConnectionFromComponent(QStringLiteral("A"), QStringLiteral("out"), QStringLiteral("B"), QStringLiteral("in"));
    const Value first = root.state().value("connections").value("connection_1");
    EXPECT_EQ(str(first.value("sourceNode")), QStringLiteral("A"));
    EXPECT_EQ(str(first.value("sourcePort")), QStringLiteral("out"));
    EXPECT_EQ(str(first.value("destinationNode")), QStringLiteral("B"));
    EXPECT_EQ(str(first.value("destinationPort")), QStringLiteral("in"));

    Value connections = Value::emptyDictionary();
    connections.set("connection_7", Value::emptyDictionary());
    connections.set("connection_2", Value::emptyDictionary());
    Value node = Value::emptyDictionary();
    node.set("class", "QCPatch");
    Value state = Value::emptyDictionary();
    state.set("connections", connections);
    node.set("state", state);
    QuartzPatch patch(node);
    patch.addConnectionFromComponent(QStringLiteral("A"), QStringLiteral("o"), QStringLiteral("B"), QStringLiteral("i"));
    EXPECT_TRUE(patch.state().value("connections").contains("connection_8"));
    EXPECT_EQ(patch.state().value("connections").size(), 3u);
}

TEST(QuartzPatch, NameAndPositionComeFromUserInfoOrDefaults)
{
    QuartzPatch root;
    QuartzPatch* sprite = root.addPatchWithClass(QStringLiteral("QCSprite"));
    EXPECT_EQ(sprite->name(), QStringLiteral("QCSprite_1"));
    EXPECT_EQ(sprite->position(), QPointF(0, 0));

    sprite->setName(QStringLiteral("Lower Third"));
    sprite->setPosition(QPointF(500, 750.5));
    EXPECT_EQ(sprite->name(), QStringLiteral("Lower Third"));
    EXPECT_EQ(sprite->position(), QPointF(500, 750.5));
    EXPECT_TRUE(sprite->state().value("userInfo").isData());
    EXPECT_EQ(root.patchWithName(QStringLiteral("Lower Third")), sprite);
    EXPECT_EQ(root.patchWithName(QStringLiteral("nothing")), nullptr);
}

TEST(QuartzPatch, PublishingAppendsToTheParent)
{
    QuartzPatch root;
    QuartzPatch* logic = root.addPatchWithClass(QStringLiteral("QCLogic"));
    logic->publishPort(QStringLiteral("inputValue2"), QStringLiteral("Logo_Enable"), QStringLiteral("Logo Enable"));
    logic->publishPort(QStringLiteral("inputValue1"), QStringLiteral("plain"));
    logic->publishOutputPort(QStringLiteral("outputResult"), QStringLiteral("result"));

    const Value info = root.infoForPublishedInputPortWithName(QStringLiteral("Logo_Enable"));
    EXPECT_EQ(str(info.value("node")), QStringLiteral("QCLogic_1"));
    EXPECT_EQ(str(info.value("port")), QStringLiteral("inputValue2"));
    auto label = plist::legacy::decode(info.value("state").value("userInfo").dataBytes());
    ASSERT_TRUE(label);
    EXPECT_EQ(label->root.find("name")->toString(), "Logo Enable");
    EXPECT_FALSE(root.infoForPublishedInputPortWithName(QStringLiteral("plain")).contains("state"));
    EXPECT_TRUE(root.infoForPublishedInputPortWithName(QStringLiteral("absent")).isNull());

    const plist::Array outputs = root.state().value("publishedOutputPorts").array();
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_EQ(str(outputs[0].value("key")), QStringLiteral("result"));
    EXPECT_TRUE(outputs[0].value("state").value("userInfo").isData());
}

TEST(QuartzPatch, PortValuesGoToPublishedIvarOrCustomStates)
{
    Value node = Value::emptyDictionary();
    node.set("class", "QCPatch");
    Value state = Value::emptyDictionary();
    Value custom = Value::emptyDictionary();
    custom.set("operand_1", Value::emptyDictionary());
    state.set("customInputPortStates", custom);
    node.set("state", state);
    QuartzPatch patch(node);

    patch.setPortValue(Value(4.0), QStringLiteral("operand_1"));
    EXPECT_EQ(portState(patch, "customInputPortStates", "operand_1"), Value(4.0)) << "no ivar states: custom ones take it";

    QuartzPatch bare;
    const Value before = bare.data();
    bare.setPortValue(Value(1), QStringLiteral("nowhere"));
    EXPECT_EQ(bare.data(), before) << "no published port and no port-state dictionary: nothing changes";

    QuartzPatch root;
    QuartzPatch* child = root.addPatchWithClass(QStringLiteral("QCSplitter"));
    child->publishPort(QStringLiteral("input"), QStringLiteral("first"));
    child->publishPort(QStringLiteral("input"), QStringLiteral("second"));
    root.setPortValue(Value(std::string("hello")), QStringLiteral("first"));
    const plist::Array published = root.state().value("publishedInputPorts").array();
    ASSERT_EQ(published.size(), 2u);
    EXPECT_EQ(str(published[1].value("key")), QStringLiteral("first")) << "the updated port moves to the end";
    EXPECT_EQ(published[1].value("state").value("value"), Value(std::string("hello")));
    EXPECT_TRUE(root.portValueForKey(QStringLiteral("first")).isNull())
        << "the value lives in the port's state, where portValueForKey does not look";

    child->setPortValue(Value(true), QStringLiteral("input"));
    EXPECT_EQ(portState(*child, "ivarInputPortStates", "input"), Value(true));
}

TEST(QuartzPatch, FileDataFoldsChildrenBackAndCloneIsDeep)
{
    QuartzPatch root;
    QuartzPatch* macro = root.addPatchWithClass(QStringLiteral("QCPatch"));
    macro->addPatchWithClass(QStringLiteral("QCSprite"));
    const Value data = root.patchDataForFileData();
    const plist::Array nodes = data.value("state").value("nodes").array();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].value("state").value("nodes").size(), 1u);
    EXPECT_FALSE(root.data().value("state").contains("nodes")) << "in memory the children live in nodes()";

    auto copy = root.clone();
    EXPECT_EQ(copy->patchDataForFileData(), data);
    EXPECT_EQ(copy->parentPatch(), nullptr);
    copy->nodes()[0]->setKey(QStringLiteral("changed"));
    EXPECT_EQ(macro->key(), QStringLiteral("QCPatch_1"));
}

TEST(QuartzPatch, AddNodesOfPatchMergesAndRepublishes)
{
    QuartzComposition outer;
    QuartzPatch* component = outer.rootPatch().addPatchWithClass(QStringLiteral("QCPatch"));
    component->setKey(QStringLiteral("Component_1"));

    QuartzComposition file;
    QuartzPatch* splitter = file.rootPatch().addPatchWithClass(QStringLiteral("QCSplitter"));
    splitter->publishPort(QStringLiteral("input"), QStringLiteral("Title"), QStringLiteral("The Title"));
    splitter->publishPort(QStringLiteral("input"), QStringLiteral("Plain"));
    file.rootPatch().addConnectionFromComponent(QStringLiteral("QCSplitter_1"), QStringLiteral("output"),
                                                QStringLiteral("X"), QStringLiteral("in"));
    file.rootPatch().setTimebase(Value(std::string("local")));
    file.setInputParameter(Value(std::string("default")), QStringLiteral("Title"));

    component->addNodesOfPatch(file.rootPatch());
    ASSERT_EQ(component->nodes().size(), 1u);
    EXPECT_EQ(component->nodes()[0]->parentPatch(), component);
    EXPECT_EQ(component->nodes()[0]->key(), QStringLiteral("QCSplitter_1"));
    EXPECT_TRUE(component->state().value("connections").contains("connection_1"));
    EXPECT_EQ(component->timebase(), Value(std::string("local")));

    const Value republished = outer.rootPatch().infoForPublishedInputPortWithName(QStringLiteral("Title"));
    EXPECT_EQ(str(republished.value("node")), QStringLiteral("Component_1"));
    EXPECT_EQ(str(republished.value("port")), QStringLiteral("Title"));
    EXPECT_FALSE(republished.value("state").contains("value")) << "input-parameter defaults are not carried over";
    auto label = plist::legacy::decode(republished.value("state").value("userInfo").dataBytes());
    ASSERT_TRUE(label);
    EXPECT_EQ(label->root.find("name")->toString(), "The Title");
    auto plainLabel =
        plist::legacy::decode(outer.rootPatch().infoForPublishedInputPortWithName(QStringLiteral("Plain")).value("state").value("userInfo").dataBytes());
    ASSERT_TRUE(plainLabel);
    EXPECT_EQ(plainLabel->root.find("name")->toString(), "Plain") << "without a label the key is the label";

    QuartzPatch empty;
    component->addNodesOfPatch(empty);
    EXPECT_FALSE(component->timebased()) << "merging a patch without a time base removes ours";
}

TEST(QuartzPatch, ConstructionToleratesMalformedNodes)
{
    Value node = Value::emptyDictionary();
    node.set("class", "QCPatch");
    Value state = Value::emptyDictionary();
    state.set("nodes", Value(std::string("not an array")));
    state.set("connections", Value(3));
    state.set("publishedInputPorts", Value::emptyDictionary());
    node.set("state", state);
    QuartzPatch patch(node);
    EXPECT_TRUE(patch.nodes().empty());
    EXPECT_TRUE(patch.state().value("connections").isDictionary());
    EXPECT_TRUE(patch.state().value("publishedInputPorts").isArray());
    QuartzPatch fromScalar(Value(5));
    EXPECT_EQ(fromScalar.patchClass(), QStringLiteral("QCPatch"));
}
