// Which groups show, as a table of selections and tabs.

#include "inspector/InspectorGroups.h"

#include <gtest/gtest.h>

using inspector::InspectorGroup;
using inspector::InspectorTab;

namespace {

const QList<InspectorGroup> kComponentGroups{InspectorGroup::Title, InspectorGroup::Transform,
                                             InspectorGroup::Appearance, InspectorGroup::Timing};
const QList<InspectorGroup> kDocumentGroups{InspectorGroup::DocumentTiming, InspectorGroup::Background,
                                            InspectorGroup::Overlays};

struct Case {
    const char* name;
    QStringList files;  // one per selected component
    InspectorTab tab;
    QList<InspectorGroup> expected;
};

QList<InspectorGroup> withAttributes(QList<InspectorGroup> groups)
{
    groups.append(InspectorGroup::Attributes);
    return groups;
}

const QStringList kOneFile{QStringLiteral("a.qtz")};
const QStringList kTwoOfOneFile{QStringLiteral("a.qtz"), QStringLiteral("a.qtz")};
const QStringList kMixed{QStringLiteral("a.qtz"), QStringLiteral("a.qtz"), QStringLiteral("b.qtz")};

const Case kCases[] = {
    {"empty, properties", {}, InspectorTab::Properties, {}},
    {"one, properties", kOneFile, InspectorTab::Properties, withAttributes(kComponentGroups)},
    {"two of one file, properties", kTwoOfOneFile, InspectorTab::Properties, withAttributes(kComponentGroups)},
    {"mixed, properties", kMixed, InspectorTab::Properties, kComponentGroups},
    {"empty, permissions", {}, InspectorTab::Permissions, {InspectorGroup::Permissions}},
    {"one, permissions", kOneFile, InspectorTab::Permissions, {InspectorGroup::Permissions}},
    {"two of one file, permissions", kTwoOfOneFile, InspectorTab::Permissions, {InspectorGroup::Permissions}},
    {"mixed, permissions", kMixed, InspectorTab::Permissions, {InspectorGroup::Permissions}},
    {"empty, document", {}, InspectorTab::Document, kDocumentGroups},
    {"one, document", kOneFile, InspectorTab::Document, kDocumentGroups},
    {"two of one file, document", kTwoOfOneFile, InspectorTab::Document, kDocumentGroups},
    {"mixed, document", kMixed, InspectorTab::Document, kDocumentGroups},
};

}  // namespace

TEST(InspectorGroups, VisibleGroupsForEachSelectionAndTab)
{
    for (const Case& c : kCases) EXPECT_EQ(inspector::visibleGroups(c.files, c.tab), c.expected) << c.name;
}

TEST(InspectorGroups, ASelectionIsOfOneKindWhenItsComponentsShareAFile)
{
    EXPECT_FALSE(inspector::isSingleKind({}));
    EXPECT_TRUE(inspector::isSingleKind(kOneFile));
    EXPECT_TRUE(inspector::isSingleKind(kTwoOfOneFile));
    EXPECT_FALSE(inspector::isSingleKind(kMixed));
    // Two components without any file name still come from "the same" file.
    EXPECT_TRUE(inspector::isSingleKind({QString(), QString()}));
}

