#include "runtime/patches/TimelineCurve.h"

#include <algorithm>
#include <cmath>

namespace runtime {

namespace {

double cubic(double p0, double p1, double p2, double p3, double s)
{
    const double u = 1 - s;
    return u * u * u * p0 + 3 * u * u * s * p1 + 3 * u * s * s * p2 + s * s * s * p3;
}

QPointF point(const plist::Value& dict)
{
    return QPointF(dict.value("time").toDouble(), dict.value("value").toDouble());
}

bool finite(double v)
{
    return std::isfinite(v);
}

}  // namespace

TimelineCurve::TimelineCurve(std::vector<Key> keys) : keys_(std::move(keys))
{
    keys_.erase(std::remove_if(keys_.begin(), keys_.end(),
                               [](const Key& k) { return !finite(k.time) || !finite(k.value); }),
                keys_.end());
    std::stable_sort(keys_.begin(), keys_.end(), [](const Key& a, const Key& b) { return a.time < b.time; });
}

TimelineCurve TimelineCurve::fromKeyFrames(const plist::Value& keyFrames)
{
    std::vector<Key> keys;
    for (const plist::Value& frame : keyFrames.array()) {
        const plist::Value* kf = frame.find("kf");
        if (!kf || !kf->isDictionary()) continue;
        Key key;
        key.time = kf->value("time").toDouble();
        key.value = kf->value("value").toDouble();
        if (const plist::Value* lc = frame.find("lc")) key.left = point(*lc);
        if (const plist::Value* rc = frame.find("rc")) key.right = point(*rc);
        keys.push_back(key);
    }
    return TimelineCurve(std::move(keys));
}

std::vector<TimelineCurve::Segment> TimelineCurve::segments() const
{
    std::vector<Segment> result;
    for (std::size_t i = 0; i + 1 < keys_.size(); ++i) {
        const Key& a = keys_[i];
        const Key& b = keys_[i + 1];
        const QPointF p0(a.time, a.value), p3(b.time, b.value);
        result.push_back({p0, p0 + a.right, p3 + b.left, p3});
    }
    return result;
}

double TimelineCurve::valueAt(double time) const
{
    if (keys_.empty()) return 0;
    if (std::isnan(time) || time < keys_.front().time) return keys_.front().value;
    // The last key at or before `time`: of two keys at the same time, the
    // later one wins, which makes the jump.
    auto next = std::upper_bound(keys_.begin(), keys_.end(), time, [](double t, const Key& k) { return t < k.time; });
    if (next == keys_.end()) return keys_.back().value;
    const Key& a = *(next - 1);
    const Key& b = *next;
    const double t0 = a.time, t1 = a.time + a.right.x(), t2 = b.time + b.left.x(), t3 = b.time;
    // Solve time(s) = time on [0, 1]: bisection, robust even if a handle
    // reaches past its neighbour and the curve folds back.
    double lo = 0, hi = 1;
    const bool increasing = t3 >= t0;
    for (int i = 0; i < 60; ++i) {
        const double mid = (lo + hi) / 2;
        const bool below = cubic(t0, t1, t2, t3, mid) < time;
        if (below == increasing) lo = mid;
        else hi = mid;
    }
    const double s = (lo + hi) / 2;
    return cubic(a.value, a.value + a.right.y(), b.value + b.left.y(), b.value, s);
}

}  // namespace runtime
