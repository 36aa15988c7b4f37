// The host's view of a plug-in's exported control structures: discovery by
// name, titles, values, ranges, callbacks and lookup by number or title.
#ifndef SPARKHOST_CONTROLS_H
#define SPARKHOST_CONTROLS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "spark/spark.h"

namespace sparkhost {

// Raised for any misuse of a control: unknown name or number, a value out of
// range or of the wrong sort, a malformed control table.
class ControlError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class ControlKind { Float, Int, Boolean, Push, Pup, Color, String };

// "Float", "Int", ... as in the exported structure names.
const char *kind_name(ControlKind kind);

// The page a control number sits on (0..3), or kClipPage for the clip
// strings and other numbers below the first page.
constexpr int kClipPage = -1;
int page_of(int number);

struct ValueRange {
    double min;
    double max;
};

// One exported control structure. Does not own the structure: it stays the
// plug-in's, and the Control is valid as long as the plug-in is loaded.
class Control {
public:
    Control(ControlKind kind, int number, void *structure);

    ControlKind kind() const { return kind_; }
    int number() const { return number_; }
    int page() const { return page_of(number_); }
    void *structure() const { return structure_; }
    // "SparkFloat16"
    std::string symbol() const;

    // A stable name for lookup and setup files: the title without its value
    // format and trailing blanks ("Density"), a list's common entry prefix
    // ("Growth Mode"), a colour's slider name ("BubbleColour"); otherwise the
    // kind and number ("Color 80", "Pup 33", "String 0").
    const std::string &name() const { return name_; }
    // What the user sees now: the name, except that a list shows its current
    // entry ("Growth Mode: Linear Growth") and a string its formatted text.
    std::string title() const;

    bool has_value() const;  // false for push buttons and strings
    // Float, int, boolean 0/1, list entry from 0, packed colour word; 0 for
    // kinds without a numeric value.
    double value() const;
    // The allowed values; none for push buttons and strings.
    std::optional<ValueRange> range() const;
    // Empty when value is acceptable, else a message naming the control and
    // what is wrong (range, whole numbers, kind without a value).
    std::string check_value(double value) const;
    // Writes the structure; throws ControlError when check_value objects.
    void set_value(double value);
    // Writes an animated value without refusing it: clamped into the range,
    // truncated toward zero for whole-number kinds, booleans on when not 0.
    void assign_clamped(double value);

    // String controls only.
    std::string text() const;
    std::string check_text(std::string_view text) const;
    void set_text(std::string_view text);

    // Calls the structure's callback as the host does; null when the control
    // has none or the callback rendered nothing.
    unsigned long *notify(const SparkInfoStruct &info, int reason = SPARK_REASON_USER) const;
    // A user's change: set, then the callback with reason 1.
    unsigned long *set_by_user(double value, const SparkInfoStruct &info);
    unsigned long *set_text_by_user(std::string_view text, const SparkInfoStruct &info);
    unsigned long *press(const SparkInfoStruct &info) const { return notify(info); }

private:
    friend class ControlTable;
    std::string label() const;  // "control 16 "Density""
    SparkCallback callback() const;

    ControlKind kind_;
    int number_;
    void *structure_;
    std::string name_;
};

// Looks an exported symbol up by name; null when it is not exported.
using SymbolLookup = std::function<void *(const char *name)>;

// Every control a plug-in exports, in number order.
class ControlTable {
public:
    ControlTable() = default;
    // Finds SparkFloat<N> ... SparkString<N> for N in 0..SPARK_MAX_CONTROL.
    // Throws ControlError when two kinds claim the same number.
    static ControlTable discover(const SymbolLookup &lookup);
    static ControlTable discover(void *dlopen_handle);

    const std::vector<Control> &controls() const { return controls_; }
    std::vector<Control> &controls() { return controls_; }
    bool empty() const { return controls_.empty(); }

    // Null when absent.
    Control *find(int number);
    // Matches the name, the current title or the symbol, ignoring case and
    // surrounding blanks; the lowest number wins when pages repeat a title.
    Control *find(std::string_view name);
    std::vector<Control *> find_all(std::string_view name);
    // As find, but throw ControlError; the message for an unknown name
    // suggests the closest one.
    Control &at(int number);
    Control &at(std::string_view name);
    // The known name nearest to name by edit distance, ignoring case; empty
    // when nothing is near enough to be a likely typo.
    std::string closest_name(std::string_view name) const;

private:
    std::vector<Control> controls_;
};

// The controls of the plug-in the host has loaded, for the host functions
// the plug-in calls (setups, curve reads). Set from the host's thread before
// the plug-in's entry points run; registering again replaces the table, and
// pointers into the old one become invalid.
ControlTable &register_plugin_controls(void *dlopen_handle);
ControlTable &register_plugin_controls(ControlTable table);
void unregister_plugin_controls();
ControlTable *registered_controls();  // null when none registered

}  // namespace sparkhost

#endif  // SPARKHOST_CONTROLS_H
