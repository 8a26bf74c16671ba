// The attribute type table: every code has its entry, and the entries say
// what the rest of the program does with each type.

#include "model/AttributeTypes.h"
#include "model/RichFontValue.h"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QJsonObject>

#include <gtest/gtest.h>

using namespace model;

TEST(AttributeTypes, EveryCodeHasItsEntryInOrder)
{
    for (int code = 0; code < int(attributeTypes().size()); ++code) {
        const AttributeTypeInfo& type = attributeType(code);
        EXPECT_EQ(type.code, code);
        EXPECT_NE(type.name, nullptr);
        EXPECT_NE(type.normalized, nullptr);
        EXPECT_NE(type.fromJson, nullptr);
        EXPECT_NE(type.toJson, nullptr);
    }
    EXPECT_EQ(attributeType(99).code, kTypeString) << "unknown codes read as strings";
    EXPECT_EQ(attributeType(-1).code, kTypeString);
}

TEST(AttributeTypes, OnlyTheFirstSixAnimate)
{
    for (const AttributeTypeInfo& type : attributeTypes()) EXPECT_EQ(type.animates, type.code <= kTypeColor) << type.name;
    EXPECT_EQ(attributeType(kTypeNumber).interpolation, Interpolation::Linear);
    EXPECT_EQ(attributeType(kTypeColor).interpolation, Interpolation::LinearPerChannel);
    for (int code : {kTypeString, kTypeIndex, kTypeBoolean, kTypeIndexMenu}) EXPECT_EQ(attributeType(code).interpolation, Interpolation::Hold);
}

TEST(AttributeTypes, ExportCurvesAndPortForms)
{
    EXPECT_EQ(attributeType(kTypeNumber).curve, ExportCurve::Smooth);
    EXPECT_EQ(attributeType(kTypeColor).curve, ExportCurve::SmoothPerChannel);
    EXPECT_EQ(attributeType(kTypeIndex).curve, ExportCurve::SteppedValues);
    EXPECT_EQ(attributeType(kTypeIndexMenu).curve, ExportCurve::SteppedValues);
    EXPECT_EQ(attributeType(kTypeString).curve, ExportCurve::SteppedIndices);
    EXPECT_EQ(attributeType(kTypeBoolean).curve, ExportCurve::SteppedIndices);
    EXPECT_EQ(attributeType(kTypeFont).portForm, PortForm::FontNameAndSize);
    EXPECT_EQ(attributeType(kTypeRichFont).portForm, PortForm::RichFontMembers);
    EXPECT_TRUE(attributeType(kTypeFilePath).filePath);
    EXPECT_TRUE(attributeType(kTypeOtherFilePath).filePath);
    EXPECT_FALSE(attributeType(kTypeString).filePath);
    EXPECT_TRUE(attributeType(kTypeVideoInput).alwaysPublished);
    EXPECT_FALSE(attributeType(kTypeImage).alwaysPublished);
}

TEST(AttributeTypes, PortTypesChooseTheirType)
{
    const std::pair<const char*, int> expected[] = {
        {"QCPortTypeBoolean", kTypeBoolean}, {"QCPortTypeNumber", kTypeNumber}, {"QCPortTypeString", kTypeString},
        {"QCPortTypeColor", kTypeColor},     {"QCPortTypeImage", kTypeImage},   {"__RTF__", kTypeStyledText},
        {"__FONT__", kTypeFont},             {"__RICHFONT__", kTypeRichFont},   {"__FILE__", kTypeFilePath},
    };
    for (const auto& [name, code] : expected) {
        const AttributeTypeInfo* type = attributeTypeForPortType(QLatin1String(name), false);
        ASSERT_NE(type, nullptr) << name;
        EXPECT_EQ(type->code, code) << name;
    }
    EXPECT_EQ(attributeTypeForPortType(QStringLiteral("QCPortTypeIndex"), false)->code, kTypeIndex);
    EXPECT_EQ(attributeTypeForPortType(QStringLiteral("QCPortTypeIndex"), true)->code, kTypeIndexMenu);
    EXPECT_EQ(attributeTypeForPortType(QStringLiteral("QCPortTypeStructure"), false), nullptr);
}

TEST(AttributeTypes, JsonFormsPerType)
{
    QString why;
    EXPECT_EQ(*attributeType(kTypeNumber).fromJson(QJsonValue(2.5), &why, {}), QVariant(2.5f));
    EXPECT_FALSE(attributeType(kTypeNumber).fromJson(QJsonValue(QStringLiteral("2")), &why, {}));
    EXPECT_TRUE(why.contains(QLatin1String("a number"))) << why.toStdString();
    EXPECT_EQ(*attributeType(kTypeBoolean).fromJson(QJsonValue(true), &why, {}), QVariant(true));
    EXPECT_EQ(attributeType(kTypeColor).fromJson(QJsonValue(QStringLiteral("#FF000080")), &why, {})->value<QColor>(), QColor(255, 0, 0, 128));
    EXPECT_FALSE(attributeType(kTypeColor).fromJson(QJsonValue(QStringLiteral("red")), &why, {}));
    EXPECT_EQ(attributeType(kTypeColor).toJson(QColor(255, 0, 0, 128)), QJsonValue(QStringLiteral("#ff000080")));
    EXPECT_EQ(attributeType(kTypeColor).toJson(QColor(0, 255, 0)), QJsonValue(QStringLiteral("#00ff00")));
    const auto font = attributeType(kTypeFont).fromJson(QJsonObject{{"family", "DejaVu Sans"}, {"size", 20}}, &why, {});
    ASSERT_TRUE(font);
    EXPECT_EQ(font->value<QFont>().pointSizeF(), 20.0);
    EXPECT_FALSE(attributeType(kTypeImage).fromJson(QJsonObject{{"image", "/no/such.png"}}, &why, {}));
    EXPECT_TRUE(why.contains(QLatin1String("/no/such.png")));
    EXPECT_EQ(attributeType(kTypeImage).toJson(QImage(4, 3, QImage::Format_ARGB32)).toObject().value(QLatin1String("width")), 4);
}

TEST(AttributeTypes, NormalisedValuesAreTheStoredKinds)
{
    EXPECT_EQ(attributeType(kTypeNumber).normalized(QVariant(3)).metaType().id(), QMetaType::Float);
    EXPECT_FALSE(attributeType(kTypeNumber).normalized(QVariant(QStringLiteral("three"))).isValid());
    EXPECT_EQ(attributeType(kTypeBoolean).normalized(QVariant(1.0)), QVariant(true));
    EXPECT_EQ(attributeType(kTypeString).normalized(QVariant(12)), QVariant(QStringLiteral("12")));
    EXPECT_EQ(attributeType(kTypeColor).normalized(QVariant(QColor(Qt::red))).value<QColor>(), QColor(Qt::red));
}
