#include "runtime/patches/filters/FilterDefinition.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <deque>
#include <numbers>
#include <string>

namespace runtime {

const Value& FilterInputs::value(const char* key) const
{
    static const Value none;
    for (const auto& [k, port] : ports_)
        if (std::strcmp(k, key) == 0) return port->value;
    return none;
}

double FilterInputs::number(const char* key, double low, double high) const
{
    const double v = number(key);
    return std::clamp(std::isnan(v) ? 0.0 : v, low, high);
}

QPointF FilterInputs::point(const char* prefix) const
{
    const std::string p(prefix);
    // Far beyond any image, yet small enough to square without overflow.
    constexpr double kFar = 1e9;
    return {number((p + "_X").c_str(), -kFar, kFar), number((p + "_Y").c_str(), -kFar, kFar)};
}

double FilterInputs::angle(const char* key) const
{
    // Beyond a few turns an angle only loses precision.
    return number(key, -1e6, 1e6) * std::numbers::pi / 180.0;
}

double FilterInputs::distance(const char* key) const
{
    const double d = number(key);
    if (!normalized_) return d;
    const Image in = image();
    return d * (in.isNull() || in.isInfinite() ? 1.0 : in.pixelSize().width());
}

Image applyFilter(const FilterDefinition& filter, const FilterValues& values, bool normalized)
{
    std::deque<InputPort> storage;  // stable addresses for the port list
    FilterInputs::Ports ports;
    for (const FilterPort& p : filter.ports) {
        InputPort& port = storage.emplace_back();
        port.key = QString::fromLatin1(p.key);
        port.type = p.type;
        port.value = p.type == PortType::Color ? Value(p.color) : p.type == PortType::Number ? Value(p.number) : Value();
        ports.emplace_back(p.key, &port);
    }
    for (const auto& entry : values) {
        const char* key = entry.first;
        const auto found = std::find_if(ports.begin(), ports.end(), [key](const auto& p) { return std::strcmp(p.first, key) == 0; });
        if (found != ports.end()) found->second->assign(entry.second);
    }
    return filter.apply(FilterInputs(ports, normalized));
}

std::vector<const FilterDefinition*> allFilterDefinitions()
{
    std::vector<const FilterDefinition*> all;
    for (const auto* family : {&compositingFilters(), &colorFilters(), &generatorFilters(), &geometryFilters(), &blurFilters(),
                               &stylizeFilters()})
        for (const FilterDefinition& f : *family) all.push_back(&f);
    return all;
}

const FilterDefinition* findFilterDefinition(const QString& name)
{
    static const std::vector<const FilterDefinition*> all = allFilterDefinitions();
    const auto found = std::find_if(all.begin(), all.end(), [&](const FilterDefinition* f) { return name == QLatin1String(f->name); });
    return found == all.end() ? nullptr : *found;
}

}  // namespace runtime
