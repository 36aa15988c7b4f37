// OverlayQv: the viewport and the drawing primitives.
#include "framework/overlay.h"

#include <cmath>

#include "framework/messages.h"
#include "spark/spark_gl.h"

namespace {
const double kRadiansPerDegree = 0.017453292519943295;
}

void OverlayQv::SetViewport(int width, int height, float aspect, float zoom_factor, float scale) {
    if (width <= 0 || height <= 0 || !(zoom_factor > 0.0f) || !std::isfinite(zoom_factor)) {
        PrintError("overlay viewport refused: width %d, height %d and zoom %g must be positive\n",
                   width, height, zoom_factor);
        return;
    }
    viewer_width = width;
    viewer_height = height;
    zoom = zoom_factor;
    aspect_x = aspect;
    aspect_y = 1.0f;
    overlay_scale = scale;
}

void OverlayQv::SetColour(int red, int green, int blue, int) {
    glColor3f(static_cast<float>(red / 65535.0), static_cast<float>(green / 65535.0),
              static_cast<float>(blue / 65535.0));
}

void OverlayQv::DrawPixel(float x, float y) {
    glBegin(GL_POINTS);
    glVertex2f(x, y);
    glEnd();
}

void OverlayQv::DrawLine(float x0, float y0, float x1, float y1) {
    glBegin(GL_LINES);
    glVertex2f(x0, y0);
    glVertex2f(x1, y1);
    glEnd();
}

float OverlayQv::GrabHandleSize() const { return static_cast<float>(5.0 / zoom); }

bool OverlayQv::OverHandle(float hx, float hy, float mx, float my) const {
    float r = GrabHandleSize();
    return hx - r < mx && mx < hx + r && hy - r < my && my < hy + r;
}

void OverlayQv::DrawHandle(float x, float y, bool) {
    float left = static_cast<float>(x - 5.0 / zoom), bottom = static_cast<float>(y - 5.0 / zoom);
    float right = static_cast<float>(left + 10.0 / zoom), top = static_cast<float>(bottom + 10.0 / zoom);
    glBegin(GL_POLYGON);
    glVertex2f(left, bottom);
    glVertex2f(right, bottom);
    glVertex2f(right, top);
    glVertex2f(left, top);
    glEnd();
}

void OverlayQv::DrawHandleOutline(float x, float y) {
    float r = GrabHandleSize();
    DrawRectangle(x - r, y - r, x + r, y + r);
}

// A dash that is not positive draws nothing (there would be no end to it).
void OverlayQv::DrawLineDotted(float x0, float y0, float x1, float y1, int dash) {
    if (dash <= 0) return;
    float dx = x1 - x0, dy = y1 - y0;
    float length = static_cast<float>(std::sqrt(double(dx * dx + dy * dy)));
    float pieces = length / dash;
    if (!(pieces > 0.0f)) return;
    float step_x = dx / length * dash, step_y = dy / length * dash;
    float x = x0, y = y0;
    for (long i = 0; i < pieces; ++i) {
        float next_x = x + step_x, next_y = y + step_y;
        if (i & 1) {
            float end_x = next_x, end_y = next_y;
            if ((dx > 0.0f && end_x > x1) || (dx < 0.0f && end_x < x1)) end_x = x1;
            if ((dy > 0.0f && end_y > y1) || (dy < 0.0f && end_y < y1)) end_y = y1;
            DrawLine(x, y, end_x, end_y);
        }
        x = next_x;
        y = next_y;
    }
}

// The first segment joins the first point to itself, dotted or not: kept
// on purpose, it draws nothing visible and keeps the segments' parity.
void OverlayQv::DrawEllipse(float cx, float cy, float width, float height, float rotation,
                            int dotted, int n, float start, float end) {
    const float pi = static_cast<float>(3.141592653589793);
    float step = 360.0f / (pi * width / static_cast<float>(n));
    if (step > 36.0f) step = 36.0f;
    if (width < 5.0f || height < 5.0f) return;
    if (!(step > 0.0f)) return;  // n not positive: no walk would end
    float a = 0.5f * width, b = 0.5f * height;
    double turn = rotation * kRadiansPerDegree;
    double cos_turn = std::cos(turn), sin_turn = std::sin(turn);
    if (!(end >= start)) return;
    float previous_x = cx, previous_y = cy;
    long k = 0;
    for (float t = start; t <= end; t += step, ++k) {
        double angle = t * kRadiansPerDegree;
        float ex = static_cast<float>(std::cos(angle) * a);
        float ey = static_cast<float>(std::sin(angle) * b);
        float x = static_cast<float>(cx + cos_turn * ex - sin_turn * ey);
        float y = static_cast<float>(cy + sin_turn * ex + cos_turn * ey);
        if (k == 0) {
            previous_x = x;
            previous_y = y;
        }
        if (dotted == 0 || (k & 1)) DrawLine(x, y, previous_x, previous_y);
        previous_x = x;
        previous_y = y;
        if (t + step == t) break;  // the walk can no longer advance
    }
    if (start == 0.0f && end == 360.0f) {
        float x = static_cast<float>(cx + cos_turn * a);
        float y = static_cast<float>(cy + sin_turn * a);
        DrawLine(x, y, previous_x, previous_y);
    }
}

void OverlayQv::DrawCrosshair(float x, float y, int style) {
    float inner = GrabHandleSize();
    float arm = static_cast<float>(25.0 / zoom);
    DrawLine(x - arm, y, x - inner, y);
    DrawLine(x + inner, y, x + arm, y);
    DrawLine(x, y - arm, x, y - inner);
    DrawLine(x, y + inner, x, y + arm);
    if (style) {
        float half = 0.5f * arm;
        DrawLine(x - half, y, x, y + half);
        DrawLine(x, y + half, x + half, y);
        DrawLine(x + half, y, x, y - half);
        DrawLine(x, y - half, x - half, y);
    }
}

void OverlayQv::DrawRectangle(float x0, float y0, float x1, float y1) {
    glBegin(GL_LINE_STRIP);
    glVertex2f(x0, y0);
    glVertex2f(x1, y0);
    glVertex2f(x1, y1);
    glVertex2f(x0, y1);
    glVertex2f(x0, y0);
    glEnd();
}

void OverlayQv::DrawArrow(float x0, float y0, float x1, float y1) {
    DrawLine(x0, y0, x1, y1);
    double dx = double(x0) - x1, dy = double(y0) - y1;
    double length = std::sqrt(dx * dx + dy * dy);
    if (!(length > 0.0)) return;
    double head = 10.0 / zoom / length;
    const double spread = 25.0 * kRadiansPerDegree;
    for (int side = -1; side <= 1; side += 2) {
        double c = std::cos(side * spread), s = std::sin(side * spread);
        DrawLine(x1, y1, static_cast<float>(x1 + (c * dx - s * dy) * head),
                 static_cast<float>(y1 + (s * dx + c * dy) * head));
    }
}
