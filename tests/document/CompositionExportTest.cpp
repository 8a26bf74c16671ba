// The graph the export builds: nodes, keys, published inputs, timelines.

#include "ExportFixture.h"

#include "runtime/Composition.h"

using model::Attribute;
using model::QuartzComponent;

class CompositionExportTest : public ExportFixture {};

TEST_F(CompositionExportTest, AnEmptyCompositionHasOnlyTheFrame)
{
    auto file = exportAndRead();
    ASSERT_TRUE(file);
    EXPECT_EQ(nodeKeys(*file), QStringList({"QCClear_1", "Scaler", "stopframetimer", "QCPlugInPatch_1"}));
    EXPECT_EQ(publishedKeys(*file, "publishedInputPorts"), QStringList{"clear_enable"});
    EXPECT_EQ(publishedKeys(*file, "publishedOutputPorts"), QStringList{"active"});
    EXPECT_EQ(file->inputParameterForKey(QStringLiteral("clear_enable")), plist::Value(true));

    const QuartzPatch* stops = node(*file, QStringLiteral("QCPlugInPatch_1"));
    EXPECT_EQ(stops->identifier(), QStringLiteral("QLNStopframesPlugIn"));
    const plist::Value plugIn = stops->state().value("plugInState");
    EXPECT_EQ(plugIn.value("enableStopframesInQLNApps"), plist::Value(false));
    EXPECT_FALSE(plugIn.contains("stopframes"));
    EXPECT_EQ(plugIn.value("compositionDuration").toDouble(), composition->duration());
    EXPECT_EQ(node(*file, QStringLiteral("stopframetimer"))->identifier(), QStringLiteral("QLNPatchTimePlugIn"));
    EXPECT_EQ(connections(*file), QStringList{"stopframetimer.outputTime -> QCPlugInPatch_1._time"});
    EXPECT_EQ(node(*file, QStringLiteral("Scaler"))->name(), QStringLiteral("Scaling Factor"));

    // The file is one our own runtime loads cleanly.
    auto loaded = runtime::Composition::loadFile(path);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->problems().isEmpty()) << loaded->problems().join('\n').toStdString();
}

TEST_F(CompositionExportTest, StopFramesPublishTheTrigger)
{
    composition->addStopFrame(2.0, QStringLiteral("Wait"));
    auto file = exportAndRead();
    EXPECT_EQ(publishedKeys(*file, "publishedInputPorts"), QStringList({"clear_enable", "trigger"}));
    EXPECT_EQ(publishedKeys(*file, "publishedOutputPorts"), QStringList({"waitingForTrigger", "active"}));
    const plist::Value plugIn = node(*file, QStringLiteral("QCPlugInPatch_1"))->state().value("plugInState");
    EXPECT_EQ(plugIn.value("enableStopframesInQLNApps"), plist::Value(true));
    EXPECT_EQ(plugIn.value("stopframes").size(), 1u);
}

TEST_F(CompositionExportTest, EqualTitlesGetNumberedNames)
{
    addBox(QStringLiteral("Text"));
    addBox(QStringLiteral("Text"));
    auto file = exportAndRead();
    const QStringList inputs = publishedKeys(*file, "publishedInputPorts");
    EXPECT_EQ(inputs, QStringList({"clear_enable", "Text_Input", "Text_Enable", "Text_Input_1", "Text_Enable_1"}));

    auto loaded = runtime::Composition::loadFile(path);
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->input(QStringLiteral("Text_Input"))->name, QStringLiteral("Text Input"));
    EXPECT_EQ(loaded->input(QStringLiteral("Text_Input_1"))->name, QStringLiteral("Text Input 1"));
    // The enable switch keeps its label; only the name is numbered.
    EXPECT_EQ(loaded->input(QStringLiteral("Text_Enable_1"))->name, QStringLiteral("Text Enable"));
    EXPECT_EQ(file->inputParameterForKey(QStringLiteral("Text_Input_1")), plist::Value("text"));
    EXPECT_EQ(file->inputParameterForKey(QStringLiteral("Text_Enable")), plist::Value(true));

    // Locked values are written into the nodes instead.
    const QuartzPatch* renderer = node(*file, QStringLiteral("Renderer_1"));
    ASSERT_TRUE(renderer);
    EXPECT_EQ(portValue(renderer, "originX"), 100.0);
    EXPECT_EQ(portValue(renderer, "inputWidth"), 200.0);
    EXPECT_EQ(nodeKeys(*file).mid(4),
              QStringList({"Component_1", "Renderer_1", "enabler_Renderer_1", "enablelogic_Renderer_1", "Component_2",
                           "Renderer_2", "enabler_Renderer_2", "enablelogic_Renderer_2"}));
}

TEST_F(CompositionExportTest, SeparatorFollowsThePreference)
{
    model::Settings::setValue(model::Settings::kAvoidSpacesInPortLabels, true);
    addBox(QStringLiteral("Logo"));
    auto file = exportAndRead();
    auto loaded = runtime::Composition::loadFile(path);
    ASSERT_TRUE(loaded);
    ASSERT_TRUE(loaded->input(QStringLiteral("Logo_Enable")));
    EXPECT_EQ(loaded->input(QStringLiteral("Logo_Enable"))->name, QStringLiteral("Logo_Enable"));
    EXPECT_EQ(loaded->input(QStringLiteral("Logo_Input"))->name, QStringLiteral("Logo_Input"));
}

TEST_F(CompositionExportTest, ColourKeyframesGoThroughOneColourMaker)
{
    QuartzComponent* c = addBox(QStringLiteral("Box"));
    Attribute* color = c->attributeForKey(QStringLiteral("Color"));
    color->setAnimateable(true);
    color->addTimepoint(0.0, QColor(Qt::red));
    color->addTimepoint(2.0, QColor(Qt::blue));
    auto file = exportAndRead();

    const QuartzPatch* timeline = node(*file, QStringLiteral("TimeLine_Component_1"));
    ASSERT_TRUE(timeline);
    EXPECT_EQ(timeline->name(), QStringLiteral("TimeLine Box"));
    EXPECT_EQ(timeline->state().value("timebase"), plist::Value("external"));
    QStringList identifiers;
    QList<int> portNumbers;
    for (const plist::Value& entry : timeline->state().value("timeLines").array()) {
        identifiers << QString::fromStdString(entry.value("identifier").string());
        portNumbers << int(entry.value("portNumber").toInt());
    }
    EXPECT_EQ(identifiers, QStringList({"Color_red", "Color_green", "Color_blue"}));
    EXPECT_EQ(portNumbers, QList<int>({1, 2, 3}));

    const QStringList wires = connections(*file);
    for (const char* wire : {"TimeLine_Component_1.output_1 -> ColorMaker_Color.input1",
                             "TimeLine_Component_1.output_2 -> ColorMaker_Color.input2",
                             "TimeLine_Component_1.output_3 -> ColorMaker_Color.input3",
                             "ColorMaker_Color.outputColor -> Component_1.Color",
                             "QCPlugInPatch_1.outputTime -> TimeLine_Component_1._time"})
        EXPECT_TRUE(wires.contains(QLatin1String(wire))) << wire;
    EXPECT_EQ(wires.filter(QStringLiteral("ColorMaker_Color.outputColor")).size(), 1);
}

TEST_F(CompositionExportTest, AnimatedWidthDrivesRendererAndComponent)
{
    QuartzComponent* c = addBox(QStringLiteral("Box"));
    Attribute* width = c->attributeForKey(QStringLiteral("inputWidth"));
    width->setAnimateable(true);
    width->addTimepoint(1.0, 100.0f);
    width->addTimepoint(3.0, 300.0f);
    auto file = exportAndRead();
    const QStringList wires = connections(*file);
    EXPECT_TRUE(wires.contains(QStringLiteral("TimeLine_Component_1.output_1 -> Renderer_1.inputWidth")));
    EXPECT_TRUE(wires.contains(QStringLiteral("TimeLine_Component_1.output_1 -> Component_1.inputWidth")));
    // One entry only: the geometry pass sees the component's own entry.
    EXPECT_EQ(node(*file, QStringLiteral("TimeLine_Component_1"))->state().value("timeLines").size(), 1u);
}

TEST_F(CompositionExportTest, TimeWindowsEndWithTheComposition)
{
    QuartzComponent* c = addBox(QStringLiteral("Late"));
    c->setStartTime(2);
    c->setEndTime(composition->duration() + 20);
    auto file = exportAndRead();
    const QuartzPatch* enabler = node(*file, QStringLiteral("enabler_Renderer_1"));
    ASSERT_TRUE(enabler);
    EXPECT_EQ(portValue(enabler, "startTime"), 2.0);
    EXPECT_EQ(portValue(enabler, "endTime"), composition->duration());
    const QStringList wires = connections(*file);
    EXPECT_TRUE(wires.contains(QStringLiteral("enablelogic_Renderer_1.outputResult -> Renderer_1._enable")));
    EXPECT_TRUE(wires.contains(QStringLiteral("enabler_Renderer_1.outputResult -> enablelogic_Renderer_1.inputValue1")));
}

TEST_F(CompositionExportTest, InvalidKeyCharactersBecomeUnderscores)
{
    EXPECT_EQ(document::CompositionExport::stringByTrimmingInvalidKeyCharacters(QStringLiteral("Lower third: Name-1")),
              QStringLiteral("Lower_third__Name_1"));
    EXPECT_EQ(document::CompositionExport::stringByTrimmingInvalidKeyCharacters(QStringLiteral("Überschrift")),
              QStringLiteral("Überschrift"));
}

TEST_F(CompositionExportTest, MissingRendererFileFailsWithoutWriting)
{
    QTemporaryDir empty;
    model::StandardComponents::setFolderForTesting(empty.path());
    const QString target = dir.filePath(QStringLiteral("Nothing.qtz"));
    EXPECT_FALSE(document::CompositionExport::exportToPath(*composition, target, false,
                                                           &document::CompositionExport::documentKey));
    model::StandardComponents::setFolderForTesting(QString());
    EXPECT_FALSE(QFileInfo::exists(target));
}
