// Animation curves per control number and the curve host functions.
#include "sparkhost/controls/curves.h"

#include <cmath>
#include <iterator>
#include <mutex>
#include <string>

namespace sparkhost {
namespace {

struct CurveStore {
    std::mutex mutex;
    std::map<int, Curve> curves;
};

CurveStore &store() {
    static CurveStore instance;
    return instance;
}

void check_control_number(int control) {
    if (control < 0 || control > SPARK_MAX_CONTROL)
        throw ControlError("no control " + std::to_string(control) + " to animate: numbers run from 0 to " +
                           std::to_string(SPARK_MAX_CONTROL));
}

}  // namespace

void Curve::set_key(float frame, float value) {
    if (!std::isfinite(frame)) throw ControlError("a curve key needs a finite frame");
    if (!std::isfinite(value)) throw ControlError("a curve key needs a finite value");
    keys_[frame] = value;
}

bool Curve::remove_key(float frame) { return keys_.erase(frame) > 0; }

float Curve::value_at(float frame) const {
    if (keys_.empty()) return 0.0f;
    auto after = keys_.upper_bound(frame);
    if (after == keys_.begin()) return after->second;
    auto before = std::prev(after);
    if (after == keys_.end() || before->first == frame) return before->second;
    double t = (static_cast<double>(frame) - before->first) / (static_cast<double>(after->first) - before->first);
    return static_cast<float>(before->second + t * (static_cast<double>(after->second) - before->second));
}

void set_curve_key(int control, float frame, float value) {
    check_control_number(control);
    CurveStore &s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    // Set in place (a copy per key made importing n keys cost n squared);
    // a refused key changes nothing, so a new curve is made aside first.
    auto found = s.curves.find(control);
    if (found != s.curves.end()) {
        found->second.set_key(frame, value);
        return;
    }
    Curve curve;
    curve.set_key(frame, value);
    s.curves.emplace(control, std::move(curve));
}

void set_curve(int control, const Curve &curve) {
    check_control_number(control);
    CurveStore &s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    if (curve.empty())
        s.curves.erase(control);
    else
        s.curves[control] = curve;
}

void remove_curve(int control) {
    CurveStore &s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.curves.erase(control);
}

void clear_curves() {
    CurveStore &s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    s.curves.clear();
}

std::optional<Curve> curve_of(int control) {
    CurveStore &s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    auto found = s.curves.find(control);
    if (found == s.curves.end()) return std::nullopt;
    return found->second;
}

std::map<int, Curve> all_curves() {
    CurveStore &s = store();
    std::lock_guard<std::mutex> lock(s.mutex);
    return s.curves;
}

float curve_value(int control, float frame) {
    if (std::optional<Curve> curve = curve_of(control)) return curve->value_at(frame);
    ControlTable *controls = registered_controls();
    Control *known = controls ? controls->find(control) : nullptr;
    return known ? static_cast<float>(known->value()) : 0.0f;
}

void apply_curves(ControlTable &controls, float frame) {
    for (const auto &[number, curve] : all_curves()) {
        if (Control *control = controls.find(number)) control->assign_clamped(curve.value_at(frame));
    }
}

void apply_curves(float frame) {
    if (ControlTable *controls = registered_controls()) apply_curves(*controls, frame);
}

}  // namespace sparkhost

// ---------------------------------------------------------------------------
// Host functions

extern "C" {

// The first argument says which curve of the control; we keep one curve
// per control, so reads and writes of any kind share it.
float sparkGetCurveValuef(int, int control, float frame) { return sparkhost::curve_value(control, frame); }

int sparkSetCurveKey(int, int control, float frame, float value) {
    try {
        sparkhost::set_curve_key(control, frame, value);
        return 1;
    } catch (const sparkhost::ControlError &error) {
        sparkError(error.what());
        return 0;
    }
}

}  // extern "C"
