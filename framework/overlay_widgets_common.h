// What the overlay widgets share: range checks on percent records and
// picking one of several handles.
#pragma once

#include "framework/overlay.h"
#include "spark/spark.h"

namespace overlay_widgets {

// value = maximum / 100 when 100 × value exceeds the record's maximum.
inline void limit_to_maximum(float &value, const SparkFloatStruct *record) {
    if (record && 100.0f * value > record->Max) value = record->Max / 100.0f;
}

// value = minimum / 100 when the record's minimum exceeds 100 × value.
inline void limit_to_minimum(float &value, const SparkFloatStruct *record) {
    if (record && record->Min > 100.0f * value) value = record->Min / 100.0f;
}

// Maximum first, then minimum: a record whose minimum exceeds its maximum
// leaves the value at the minimum.
inline void limit_to_range(float &value, const SparkFloatStruct *record) {
    limit_to_maximum(value, record);
    limit_to_minimum(value, record);
}

inline void write_percent(SparkFloatStruct *record, float value) {
    if (record) record->Value = 100.0f * value;
}

// The handle (1-based) whose grab square holds the pointer; when several
// do, the last, drawn on top, wins. 0 when none.
inline int handle_under(const OverlayQv &overlay, const float (*handles)[2], int count, float mx,
                        float my) {
    int found = 0;
    for (int i = 0; i < count; ++i)
        if (overlay.OverHandle(handles[i][0], handles[i][1], mx, my)) found = i + 1;
    return found;
}

// Clamps a point into its two records' ranges, writes it in percent and
// tells the host that both entries (index and index + 1) changed.
inline void write_point(int index, SparkFloatStruct *x_record, SparkFloatStruct *y_record, float &x,
                        float &y) {
    limit_to_range(x, x_record);
    limit_to_range(y, y_record);
    write_percent(x_record, x);
    write_percent(y_record, y);
    sparkControlUpdate(index);
    sparkControlUpdate(index + 1);
}

// The pick-and-drag pattern every widget follows: the handle under the
// pointer (0 none) is highlighted on a move and grabbed on a press, a drag
// moves what is grabbed, and HandleInteractionPlat, through the virtual
// table, follows the framework's own handling (on release, before the grab
// ends).
template <class Widget, class Drag>
void pick_and_drag(Widget &widget, InterType type, int under, float mx, float my, Drag drag) {
    switch (type) {
    case InterMove:
        widget.highlighted = under;
        break;
    case InterPress:
        widget.highlighted = widget.grabbed = under;
        break;
    case InterDrag:
        if (widget.grabbed) drag();
        break;
    case InterRelease:
        widget.HandleInteractionPlat(type, mx, my);
        widget.grabbed = 0;
        return;
    }
    widget.HandleInteractionPlat(type, mx, my);
}

// Event kinds outside 0..3, and events before the overlay has a viewport,
// are ignored.
inline bool accepts(const OverlayQv *overlay, InterType type) {
    return overlay && overlay->ready() && type >= InterMove && type <= InterRelease;
}

}  // namespace overlay_widgets
