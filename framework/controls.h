// ControlQv and its typed subclasses: an effect's parameters, bound to the
// host's control structures, translating between host and effect units.
#pragma once

#include <cstdint>
#include <vector>

#include "spark/spark.h"

// One other member of a checkbox's radio group: its host number and record.
struct RadioMemberQv {
    int32_t index;
    SparkBooleanStruct *record;
};

// The checkboxes that a checkbox switches off when it is switched on.
struct RadioGroupQv {
    std::vector<RadioMemberQv> members;
};

// What a control needs beyond its own host record. Whoever binds the
// control (the host adapter) keeps one per control for as long as the
// control lives, fills in what applies to the control's class and hands its
// address to Bind, which takes from it:
//   PositionControlQv  y: the record of entry index+1.
//   ColourControlQv    sliders: the R, G, B percent records of entries
//                      index+1..index+3 (all three, or the control has no
//                      sliders); second_colour: a second host colour kept
//                      equal to the first whenever the control is frozen or
//                      thawed.
//   FileControlQv      text: the string record of entry index+7.
//   CheckboxControlQv  group: its radio group (null for a lone checkbox).
//   integer, float, angle, size and position controls: the range restored
//                      when a frozen control is thawed, in range[0..1]
//                      (minimum, maximum; a position's X) and range[2..3]
//                      (a position's Y) when has_range is set; otherwise
//                      Bind saves the host records' ranges as they are then.
struct AuxQv {
    SparkFloatStruct *y = nullptr;
    SparkFloatStruct *sliders[3] = {nullptr, nullptr, nullptr};
    SparkColorStruct *second_colour = nullptr;
    SparkStringStruct *text = nullptr;
    RadioGroupQv *group = nullptr;
    bool has_range = false;
    double range[4] = {0.0, 0.0, 0.0, 0.0};
};

// A parameter bound to one or more host control entries. A control that was
// never bound (no host record) keeps its cache and makes no host calls.
// SetValue and GetValue are not virtual: each class has its own value types.
// GetValue takes a frame: negative reads the value captured by the last Sync,
// 0 or more reads the host's animation curve at that frame.
class ControlQv {
public:
    ControlQv() = default;

    virtual void Sync() {}
    // The host adapter's per-frame refresh of the cache from the host: the
    // same as Sync except where Sync leaves the cache alone on purpose.
    virtual void Refresh() { Sync(); }
    // Sets the flag; a bound control whose flag changes shows it on the host
    // (ShowDisabled).
    void Disable(bool flag);
    // Sets the flag and, when bound, hides or shows the control's entry and
    // any others it occupies (HideMoreEntries).
    void Hide(bool flag);
    virtual void ResetKeyframes() {}
    virtual void EnableKeyframes() {}

    // Ties the control to host entry index, whose structure is at record,
    // takes what its class needs from aux (may be null) and sets the two
    // flag bytes to 0 and 1.
    void Bind(int index, void *record, AuxQv *aux);
    bool bound() const { return host_value != nullptr; }
    // The host adapter's rule for a control callback: re-render (or redraw)
    // after the control's own handling.
    bool WantsDefaultCallback() const { return host_flags[0] == 0 && host_flags[1] != 0; }

    int32_t index = 0;            // host number of the (first) entry
    void *host_value = nullptr;   // that entry's structure
    AuxQv *aux = nullptr;         // as given to Bind
    uint8_t host_flags[2] = {0, 0};
    uint8_t disabled = 0;
    uint8_t hidden = 0;
    uint8_t live = 1;             // set at construction; not read by the framework

protected:
    ~ControlQv() = default;
    // Called by Bind once index, host_value and aux are set.
    virtual void Bound() {}
    // The host side of a change of the disabled flag; by default none.
    virtual void ShowDisabled(bool) {}
    // The entries beyond index that hide and show with the control.
    virtual void HideMoreEntries(bool) const {}
    // Marks title (as MarkTitle) and tells the host that entry index changed.
    void MarkDisabled(const char *title, bool disabling) const;
    // sparkDisableParameter (flag set) or sparkEnableParameter for one entry.
    void ShowEntry(int entry, bool flag) const;
    // The title with blanks and newlines trimmed and a "*" marker added
    // (disabling) or removed (enabling), formed in a scratch buffer.
    static void MarkTitle(const char *title, bool disabling);
};

class IntegerControlQv : public ControlQv {
public:
    void Sync() override;
    void GetValue(double frame, long &value) const;
    long GetValue(double frame) const;
    void SetValue(double frame, long value);
    SparkIntStruct *record() const { return static_cast<SparkIntStruct *>(host_value); }

    double saved_range[2] = {0.0, 0.0};
    long cached = 0;

protected:
    void Bound() override;
    void ShowDisabled(bool flag) override;
};

// What float, angle and size controls share: a float record whose range is
// frozen and thawed, and a cached value.
class FloatRecordControlQv : public ControlQv {
public:
    SparkFloatStruct *record() const { return static_cast<SparkFloatStruct *>(host_value); }

    double saved_range[2] = {0.0, 0.0};
    double cached = 0.0;

protected:
    void Bound() override;
    void ShowDisabled(bool flag) override;
};

class FloatControlQv : public FloatRecordControlQv {
public:
    void Sync() override;
    void GetValue(double frame, double &value) const;
    double GetValue(double frame) const;
    void SetValue(double frame, double value);
};

// Degrees, as the host shows them.
class AngleControlQv : public FloatControlQv {};

// A fraction of the frame; the host shows percent.
class SizeControlQv : public FloatRecordControlQv {
public:
    void Sync() override;
    void GetValue(double frame, double &value) const;
    double GetValue(double frame) const;
    void SetValue(double frame, double value);
};

class CheckboxControlQv : public ControlQv {
public:
    void Sync() override;
    void GetValue(double frame, bool &value) const;
    bool GetValue(double frame) const;
    // Switching on (1) switches off every other member of the radio group.
    void SetValue(double frame, int value);
    SparkBooleanStruct *record() const { return static_cast<SparkBooleanStruct *>(host_value); }

    RadioGroupQv *group = nullptr;
    uint8_t checked = 0;

protected:
    void Bound() override;
    void ShowDisabled(bool flag) override;
};

// Items numbered from 1 (the host numbers them from 0).
class ListControlQv : public ControlQv {
public:
    void Sync() override;
    // Reads the host afresh for any frame, and caches what it read.
    void GetValue(double frame, long &value);
    long GetValue(double frame);
    void SetValue(double frame, long value);
    SparkPupStruct *record() const { return static_cast<SparkPupStruct *>(host_value); }

    long cached = 0;

protected:
    // Only flagged and refreshed: the choice itself stays free.
    void ShowDisabled(bool flag) override;
};

// A colour word (red bits 0-7, green 8-15, blue 16-23), optionally with
// three percent sliders on the following entries.
class ColourControlQv : public ControlQv {
public:
    void Sync() override;
    // 15-bit components of the host word without filled low bits; the frame is ignored.
    void GetValue(double frame, int &red, int &green, int &blue, int &alpha) const;
    void SetValue(double frame, int red, int green, int blue, int alpha);
    SparkColorStruct *record() const { return static_cast<SparkColorStruct *>(host_value); }
    bool has_sliders() const { return sliders[0] && sliders[1] && sliders[2]; }

    SparkColorStruct *second_colour = nullptr;
    SparkFloatStruct *sliders[3] = {nullptr, nullptr, nullptr};
    int cached[4] = {0, 0, 0, 0};  // red, green, blue, alpha on 0..32767

protected:
    void Bound() override;
    void ShowDisabled(bool flag) override;
    void HideMoreEntries(bool flag) const override;
};

// X and Y fractions of the frame on entries index and index+1; the host
// shows percent.
class PositionControlQv : public ControlQv {
public:
    void Sync() override {}  // kept on purpose: static reads see what the cache last held
    // X and Y from the host's records as fractions of the frame (Y 0 without a Y record).
    void Refresh() override;
    void GetValue(double frame, double &x, double &y) const;
    void SetValue(double frame, double x, double y);
    SparkFloatStruct *x_record() const { return static_cast<SparkFloatStruct *>(host_value); }

    SparkFloatStruct *y_record = nullptr;
    double saved_range[4] = {0.0, 0.0, 0.0, 0.0};  // X min, X max, Y min, Y max
    double cached_x = 0.0;
    double cached_y = 0.0;

protected:
    void Bound() override;
    void ShowDisabled(bool flag) override;
    void HideMoreEntries(bool flag) const override;
};

// Disabling only sets the flag: the host's text entry stays as it is.
class TextControlQv : public ControlQv {
public:
    void Sync() override;
    // The host's own string (any frame); from then on the control reads it in place.
    void GetValue(double frame, const char *&value);
    const char *GetValue(double frame);
    void SetValue(double frame, const char *value);
    SparkStringStruct *record() const { return static_cast<SparkStringStruct *>(host_value); }

    char buffer[SPARK_STRING_LENGTH] = {};
    char *cached = buffer;
};

// A file name: a button on entry index and its text on entry index+7.
class FileControlQv : public ControlQv {
public:
    void Sync() override;
    // The host's string with every white-space character deleted in place.
    void GetValue(double frame, char *&value);
    char *GetValue(double frame);
    void SetValue(double frame, const char *value);
    SparkPushStruct *button() const { return static_cast<SparkPushStruct *>(host_value); }

    SparkStringStruct *text = nullptr;
    char buffer[SPARK_STRING_LENGTH] = {};
    char *cached = buffer;

protected:
    void Bound() override;
    void ShowDisabled(bool flag) override;
    void HideMoreEntries(bool flag) const override;
};

class ButtonControlQv : public ControlQv {
public:
    SparkPushStruct *record() const { return static_cast<SparkPushStruct *>(host_value); }

protected:
    void ShowDisabled(bool flag) override;
};
