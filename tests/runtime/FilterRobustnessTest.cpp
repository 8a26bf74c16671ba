// Every filter of the table through the patch, and with the values a
// damaged or hostile file may hold: not a number, infinite, huge, zero,
// negative, and missing images. None may crash or allocate past the size
// limit.

#include "CompositionBuilder.h"
#include "FilterTestSupport.h"

#include <limits>
#include <set>
#include <string>

using runtime::FilterDefinition;
using runtime::Image;
using runtime::PortType;
using test::applyFilter;
using test::Node;
using test::solidImage;

namespace {

TEST(FilterTable, NamesAreUniqueAndEveryFilterLoadsInThePatch)
{
    std::set<std::string> names;
    Node r = test::root();
    int index = 0;
    for (const FilterDefinition* f : runtime::allFilterDefinitions()) {
        EXPECT_TRUE(names.insert(f->name).second) << f->name;
        r.child(Node("QCImageFilter", "Filter_" + std::to_string(++index)).identifier(f->name));
    }
    auto c = test::load(r);
    ASSERT_TRUE(c);
    EXPECT_TRUE(c->unsupportedClasses().isEmpty()) << c->unsupportedClasses().join(' ').toStdString();
    EXPECT_EQ(c->patchCounts().at("QCImageFilter"), index);
}

TEST(FilterRobustness, BadNumbersAndMissingImagesNeitherCrashNorGrowPastTheLimit)
{
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();
    const double badNumbers[] = {kNaN, kInf, -kInf, 1e12, -1e12, 0, -1};
    const Image small = solidImage(QSize(16, 16), QColor(200, 100, 50, 180), QPoint(3, -2));
    const Image infinite = applyFilter("CIConstantColorGenerator");
    for (const FilterDefinition* f : runtime::allFilterDefinitions()) {
        for (const Image& image : {Image(), small, infinite}) {
            for (double bad : badNumbers) {
                std::vector<std::pair<const char*, runtime::Value>> values;
                for (const runtime::FilterPort& p : f->ports) {
                    if (p.type == PortType::Number) values.emplace_back(p.key, bad);
                    if (p.type == PortType::Image) values.emplace_back(p.key, image);
                }
                const Image out = applyFilter(f->name, values);
                if (out.isNull()) continue;
                if (!out.isInfinite()) {
                    EXPECT_LE(out.extent().width(), 8192) << f->name;
                    EXPECT_LE(qint64(out.extent().width()) * out.extent().height(), qint64(7680) * 4320) << f->name;
                }
                EXPECT_EQ(out.renderRegion(QRect(-40, -40, 96, 96)).size(), QSize(96, 96)) << f->name << " " << bad;
            }
        }
    }
}

}  // namespace
