// The angle, circle and rectangle widgets: the crosshair's pick-and-drag
// pattern applied to their handles.
#include <cmath>

#include "framework/overlay_widgets.h"
#include "framework/overlay_widgets_common.h"

using namespace overlay_widgets;

namespace {
const double kDegreesPerRadian = 57.29577951308232;
}

// ---- AngleOverlayQv ---------------------------------------------------------

void AngleOverlayQv::Bind(OverlayQv *drawing, int angle_index, SparkFloatStruct *angle_record) {
    overlay = drawing;
    index = angle_index;
    record = angle_record;
}

void AngleOverlayQv::SetCentre(float new_x, float new_y) {
    centre_x = new_x;
    centre_y = new_y;
}

void AngleOverlayQv::HandleInteraction(InterType type, float mx, float my) {
    if (!accepts(overlay, type)) return;
    const int under = overlay->OverHandle(screen_x, screen_y, mx, my) ? 1 : 0;
    pick_and_drag(*this, type, under, mx, my, [&] {
        double dx = mx - double(centre_x) * overlay->viewer_width;
        double dy = my - double(centre_y) * overlay->viewer_height;
        if (dx != 0.0 || dy != 0.0) {
            double degrees = std::atan2(dy, dx) * kDegreesPerRadian;
            angle = static_cast<float>(degrees < 0.0 ? degrees + 360.0 : degrees);
        }
    });
}

// The angle record holds degrees, not percent.
void AngleOverlayQv::HandleInteractionPlat(InterType type, float, float) {
    if (type != InterDrag || !grabbed || !record) return;
    if (angle > record->Max) angle = record->Max;
    if (record->Min > angle) angle = record->Min;
    record->Value = angle;
    sparkControlUpdate(index);
}

// ---- CircleOverlayQv --------------------------------------------------------

void CircleOverlayQv::Bind(OverlayQv *drawing, int x_index, SparkFloatStruct *x_rec,
                           SparkFloatStruct *y_rec, int radius_index,
                           SparkFloatStruct *radius_rec) {
    overlay = drawing;
    index = x_index;
    record = x_rec;
    y_record = y_rec;
    index2 = radius_index;
    radius_record = radius_rec;
}

void CircleOverlayQv::SetCircle(float new_x, float new_y, float new_radius) {
    x = new_x;
    y = new_y;
    radius = new_radius;
}

void CircleOverlayQv::HandleInteraction(InterType type, float mx, float my) {
    if (!accepts(overlay, type)) return;
    const float handles[2][2] = {{screen_x, screen_y}, {rim_x, rim_y}};
    pick_and_drag(*this, type, handle_under(*overlay, handles, 2, mx, my), mx, my, [&] {
        if (grabbed == 1) {
            x = mx / overlay->viewer_width;
            y = my / overlay->viewer_height;
        } else {
            double dx = mx - double(x) * overlay->viewer_width;
            double dy = my - double(y) * overlay->viewer_height;
            radius = static_cast<float>(std::sqrt(dx * dx + dy * dy) / overlay->viewer_width);
        }
    });
}

void CircleOverlayQv::HandleInteractionPlat(InterType type, float, float) {
    if (type != InterDrag) return;
    if (grabbed == 1 && record) {
        write_point(index, record, y_record, x, y);
    } else if (grabbed == 2 && radius_record) {
        limit_to_range(radius, radius_record);
        write_percent(radius_record, radius);
        sparkControlUpdate(index2);
    }
}

// ---- RectangleOverlayQv -----------------------------------------------------

void RectangleOverlayQv::HandleInteraction(InterType type, float mx, float my) {
    if (!accepts(overlay, type)) return;
    const float handles[2][2] = {{screen_x, screen_y}, {screen_x2, screen_y2}};
    pick_and_drag(*this, type, handle_under(*overlay, handles, 2, mx, my), mx, my, [&] {
        if (grabbed == 1) {
            x = mx / overlay->viewer_width;
            y = my / overlay->viewer_height;
        } else {
            x2 = mx / overlay->viewer_width;
            y2 = my / overlay->viewer_height;
        }
    });
}

void RectangleOverlayQv::HandleInteractionPlat(InterType type, float, float) {
    if (type != InterDrag) return;
    if (grabbed == 1 && record)
        write_point(index, record, y_record, x, y);
    else if (grabbed == 2 && x2_record)
        write_point(index2, x2_record, y2_record, x2, y2);
}
