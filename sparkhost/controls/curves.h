// Animation curves the host keeps per control number, and writing their
// values into the control structures before a frame is processed.
#ifndef SPARKHOST_CURVES_H
#define SPARKHOST_CURVES_H

#include <map>
#include <optional>

#include "sparkhost/controls/controls.h"

namespace sparkhost {

// Keys by frame. Between two keys the value runs linearly; before the first
// key it holds the first value and after the last the last value.
class Curve {
public:
    // Adds a key, or replaces the value of the key at exactly that frame.
    // Throws ControlError for a frame or value that is not finite.
    void set_key(float frame, float value);
    bool remove_key(float frame);
    bool empty() const { return keys_.empty(); }
    const std::map<float, float> &keys() const { return keys_; }
    // 0 for a curve without keys.
    float value_at(float frame) const;

    bool operator==(const Curve &other) const { return keys_ == other.keys_; }

private:
    std::map<float, float> keys_;
};

// The process-wide curves, one per control number whatever the control's
// kind (an imported amplitude curve lands on a switch). Safe to call from
// any thread.
void set_curve_key(int control, float frame, float value);  // throws ControlError
void set_curve(int control, const Curve &curve);             // an empty curve removes it
void remove_curve(int control);
void clear_curves();
std::optional<Curve> curve_of(int control);
std::map<int, Curve> all_curves();

// What the plug-in reads for a control at a frame: its curve when it has
// one, else the registered control's current value, else 0.
float curve_value(int control, float frame);

// Writes every curve's value at frame into its control's structure, for
// the host to call before each frame (clamped into each control's range;
// curves without a registered control are skipped).
void apply_curves(ControlTable &controls, float frame);
void apply_curves(float frame);  // on the registered controls; none: nothing

}  // namespace sparkhost

#endif  // SPARKHOST_CURVES_H
