#pragma once
// A Core Image filter as the QCImageFilter patch runs it: its input ports
// with Core Image's keys and defaults, and the function that makes the
// output image from them. The table is split by family, one file each.

#include "runtime/Port.h"
#include "runtime/PortType.h"
#include "runtime/Value.h"

#include <QPointF>
#include <QString>

#include <utility>
#include <vector>

namespace runtime {

class FilterInputs;
using FilterFunction = Image (*)(const FilterInputs& in);

struct FilterPort {
    const char* key;
    PortType type;
    double number = 0;  // default of a Number port
    Color color{};      // default of a Color port
};

inline FilterPort imagePort(const char* key = "inputImage")
{
    return {key, PortType::Image};
}
inline FilterPort numberPort(const char* key, double value)
{
    return {key, PortType::Number, value};
}
inline FilterPort colorPort(const char* key, Color value)
{
    return {key, PortType::Color, 0, value};
}

struct FilterDefinition {
    const char* name;
    std::vector<FilterPort> ports;
    FilterFunction apply;
};

// The values on a filter node's input ports, by key.
class FilterInputs {
public:
    using Ports = std::vector<std::pair<const char*, InputPort*>>;
    FilterInputs(const Ports& ports, bool normalized) : ports_(ports), normalized_(normalized) {}

    const Value& value(const char* key) const;
    double number(const char* key) const { return value(key).toNumber(); }
    // Clamped to [low, high]; not a number reads as 0 clamped.
    double number(const char* key, double low, double high) const;
    Image image(const char* key = "inputImage") const { return value(key).toImage(); }
    Color color(const char* key) const { return value(key).toColor(); }
    // A vector split as Quartz Composer does it: `prefix`_X and `prefix`_Y.
    QPointF point(const char* prefix) const;
    // Quartz Composer shows Core Image's angles in degrees; in radians.
    double angle(const char* key) const;
    // A distance: with normalised coordinates it is a fraction of the
    // input image's width.
    double distance(const char* key) const;

private:
    const Ports& ports_;
    bool normalized_;
};

// The parts of the table, by family.
const std::vector<FilterDefinition>& compositingFilters();
const std::vector<FilterDefinition>& colorFilters();
const std::vector<FilterDefinition>& generatorFilters();
const std::vector<FilterDefinition>& geometryFilters();
const std::vector<FilterDefinition>& blurFilters();
const std::vector<FilterDefinition>& stylizeFilters();

// Runs a filter outside a patch, from its defaults with the given ports set
// (keys it does not have are ignored): for tests and benchmarks.
using FilterValues = std::vector<std::pair<const char*, Value>>;
Image applyFilter(const FilterDefinition& filter, const FilterValues& values, bool normalized = false);

// Every filter the patch runs, by Core Image name; null for others.
const FilterDefinition* findFilterDefinition(const QString& name);
std::vector<const FilterDefinition*> allFilterDefinitions();

}  // namespace runtime
