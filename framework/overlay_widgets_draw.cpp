// OverlayQv's drawing of each widget; records where the handles went so
// that the next pointer event can pick them.
#include <algorithm>
#include <cmath>

#include "framework/overlay.h"
#include "framework/overlay_widgets.h"

namespace {
const double kRadiansPerDegree = 0.017453292519943295;
}

void OverlayQv::DrawCrosshairOverlay(CrosshairOverlayQv *widget) {
    if (!widget) return;
    SetColour(widget->colour);
    float sx = widget->x * viewer_width, sy = widget->y * viewer_height;
    DrawCrosshair(sx, sy, widget->style);
    if (widget->highlighted || widget->grabbed) DrawHandle(sx, sy, widget->grabbed != 0);
    widget->screen_x = sx;
    widget->screen_y = sy;
}

void OverlayQv::DrawLineOverlay(LineOverlayQv *widget) {
    if (!widget) return;
    SetColour(widget->colour);
    float x0 = widget->x * viewer_width, y0 = widget->y * viewer_height;
    float x1 = widget->x2 * viewer_width, y1 = widget->y2 * viewer_height;
    DrawLine(x0, y0, x1, y1);
    float mx = 0.5f * (x0 + x1), my = 0.5f * (y0 + y1);
    if (widget->highlighted || widget->grabbed)
        DrawHandle(mx, my, widget->grabbed != 0);
    else
        DrawHandleOutline(mx, my);
    widget->screen_x = mx;
    widget->screen_y = my;
}

void OverlayQv::DrawAngleOverlay(AngleOverlayQv *widget) {
    if (!widget) return;
    SetColour(widget->colour);
    float cx = widget->centre_x * viewer_width, cy = widget->centre_y * viewer_height;
    float length = widget->radius / zoom;
    double turn = widget->angle * kRadiansPerDegree;
    float tip_x = static_cast<float>(cx + length * std::cos(turn));
    float tip_y = static_cast<float>(cy + length * std::sin(turn));
    int dash = std::max(1, static_cast<int>(std::lround(4.0 / zoom)));
    DrawLineDotted(cx, cy, cx + length, cy, dash);
    DrawEllipse(cx, cy, length, length, 0.0f, 0, dash, 0.0f, widget->angle);
    DrawLine(cx, cy, tip_x, tip_y);
    if (widget->highlighted || widget->grabbed)
        DrawHandle(tip_x, tip_y, widget->grabbed != 0);
    else
        DrawHandleOutline(tip_x, tip_y);
    widget->screen_x = tip_x;
    widget->screen_y = tip_y;
}

void OverlayQv::DrawCircleOverlay(CircleOverlayQv *widget) {
    if (!widget) return;
    SetColour(widget->colour);
    float cx = widget->x * viewer_width, cy = widget->y * viewer_height;
    float r = widget->radius * viewer_width;
    int segment = std::max(1, static_cast<int>(std::lround(4.0 / zoom)));
    DrawEllipse(cx, cy, 2.0f * r, 2.0f * r, 0.0f, 0, segment, 0.0f, 360.0f);
    const float handles[2][2] = {{cx, cy}, {cx + r, cy}};
    for (int i = 0; i < 2; ++i) {
        if (widget->highlighted == i + 1 || widget->grabbed == i + 1)
            DrawHandle(handles[i][0], handles[i][1], widget->grabbed == i + 1);
        else
            DrawHandleOutline(handles[i][0], handles[i][1]);
    }
    widget->screen_x = cx;
    widget->screen_y = cy;
    widget->rim_x = cx + r;
    widget->rim_y = cy;
}

void OverlayQv::DrawRectangleOverlay(RectangleOverlayQv *widget) {
    if (!widget) return;
    SetColour(widget->colour);
    float x0 = widget->x * viewer_width, y0 = widget->y * viewer_height;
    float x1 = widget->x2 * viewer_width, y1 = widget->y2 * viewer_height;
    DrawRectangle(x0, y0, x1, y1);
    const float handles[2][2] = {{x0, y0}, {x1, y1}};
    for (int i = 0; i < 2; ++i) {
        if (widget->highlighted == i + 1 || widget->grabbed == i + 1)
            DrawHandle(handles[i][0], handles[i][1], widget->grabbed == i + 1);
        else
            DrawHandleOutline(handles[i][0], handles[i][1]);
    }
    widget->screen_x = x0;
    widget->screen_y = y0;
    widget->screen_x2 = x1;
    widget->screen_y2 = y1;
}
