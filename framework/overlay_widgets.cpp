// The crosshair and line widgets, and the point pair the line shares with
// the rectangle: pick, drag and write host positions.
#include "framework/overlay_widgets.h"

#include "framework/overlay_widgets_common.h"

using namespace overlay_widgets;

// ---- CrosshairOverlayQv -----------------------------------------------------

void CrosshairOverlayQv::Bind(OverlayQv *drawing, int x_index, SparkFloatStruct *x_rec,
                              SparkFloatStruct *y_rec) {
    overlay = drawing;
    index = x_index;
    record = x_rec;
    y_record = y_rec;
}

void CrosshairOverlayQv::SetPosition(float new_x, float new_y) {
    x = new_x;
    y = new_y;
}

void CrosshairOverlayQv::HandleInteraction(InterType type, float mx, float my) {
    if (!accepts(overlay, type)) return;
    const int under = overlay->OverHandle(screen_x, screen_y, mx, my) ? 1 : 0;
    pick_and_drag(*this, type, under, mx, my, [&] {
        x = mx / overlay->viewer_width;
        y = my / overlay->viewer_height;
    });
}

void CrosshairOverlayQv::HandleInteractionPlat(InterType type, float, float) {
    if (type != InterDrag || !grabbed || !record) return;
    write_point(index, record, y_record, x, y);
}

// ---- PointPairOverlayQv -----------------------------------------------------

void PointPairOverlayQv::Bind(OverlayQv *drawing, int x_index, SparkFloatStruct *x_rec,
                              SparkFloatStruct *y_rec, int x2_index, SparkFloatStruct *x2_rec,
                              SparkFloatStruct *y2_rec) {
    overlay = drawing;
    index = x_index;
    record = x_rec;
    y_record = y_rec;
    index2 = x2_index;
    x2_record = x2_rec;
    y2_record = y2_rec;
}

void PointPairOverlayQv::SetPoints(float new_x, float new_y, float new_x2, float new_y2) {
    x = new_x;
    y = new_y;
    x2 = new_x2;
    y2 = new_y2;
}

// ---- LineOverlayQv ----------------------------------------------------------

// The middle follows the pointer; direction and length stay.
void LineOverlayQv::HandleInteraction(InterType type, float mx, float my) {
    if (!accepts(overlay, type)) return;
    const int under = overlay->OverHandle(screen_x, screen_y, mx, my) ? 1 : 0;
    pick_and_drag(*this, type, under, mx, my, [&] {
        float half_x = (x - x2) * 0.5f, half_y = (y - y2) * 0.5f;
        float middle_x = mx / overlay->viewer_width, middle_y = my / overlay->viewer_height;
        x = middle_x + half_x;
        y = middle_y + half_y;
        x2 = middle_x - half_x;
        y2 = middle_y - half_y;
    });
}

void LineOverlayQv::HandleInteractionPlat(InterType type, float, float) {
    if (type != InterDrag || !grabbed || !record) return;
    limit_to_maximum(x, record);
    limit_to_maximum(y, y_record);
    // Kept as it stands: the second point's x limits land in the first
    // point's x, and the second point's x itself is never limited.
    if (x2_record && 100.0f * x2 > x2_record->Max) x = x2_record->Max / 100.0f;
    limit_to_maximum(y2, y2_record);
    limit_to_minimum(x, record);
    limit_to_minimum(y, y_record);
    if (x2_record && x2_record->Min > 100.0f * x2) x = x2_record->Min / 100.0f;
    limit_to_minimum(y2, y2_record);
    write_percent(record, x);
    write_percent(y_record, y);
    write_percent(x2_record, x2);
    write_percent(y2_record, y2);
    sparkControlUpdate(index);
    sparkControlUpdate(index + 1);
    sparkControlUpdate(index2);
    sparkControlUpdate(index2 + 1);
}
