// Bubbles' viewer overlay: the emitter line with its band of birth-position
// variation, the light line and the light cone, and the pointer events that
// drag them.
#include <cmath>

#include "bubbles/bubbles.h"

namespace {

// Radians per degree, deliberately 3.141592654 / 180 rather than the exact value.
constexpr double kDegree = 0.017453292522222223;
// Dashes and gaps of the band's edges and the cone's edges, in image units.
constexpr int kDash = 10;
// Where the cone handles wait while there is no cone to edit.
constexpr float kParked = -10000.0f;

// Light widgets take part only while the light shines.
bool light_active(const BubblesInfo &info) {
    return info.lightIntensity.GetValue(-1.0) != 0.0 && info.lightOn.GetValue(-1.0);
}

}  // namespace

void Bubbles::RenderOverlay() {
    BubblesInfo &c = info;
    BeginRender();
    const float aspect = PixelAspect();
    const float W = float(viewer_width), H = float(viewer_height);
    const float left_x = float(c.left.cached_x), left_y = float(c.left.cached_y);
    const float right_x = float(c.right.cached_x), right_y = float(c.right.cached_y);
    const float source_x = float(c.lightSource.cached_x), source_y = float(c.lightSource.cached_y);
    const float target_x = float(c.lightTarget.cached_x), target_y = float(c.lightTarget.cached_y);
    const bool lit = light_active(c);

    if (c.lightLine.shown && lit) {
        c.lightLine.SetPoints(source_x, source_y, target_x, target_y);
        DrawLineOverlay(&c.lightLine);
    }

    if (c.emitterLine.shown) {
        c.emitterLine.SetPoints(left_x, left_y, right_x, right_y);
        DrawLineOverlay(&c.emitterLine);
    }

    if (c.leftCross.shown) {
        c.leftCross.SetPosition(left_x, left_y);
        c.rightCross.SetPosition(right_x, right_y);
        DrawCrosshairOverlay(&c.leftCross);
        DrawCrosshairOverlay(&c.rightCross);

        // x difference first: the directions of the emitter's normal.
        const float a1 = float(std::atan2(double(right_x - left_x), double(right_y - left_y)));
        const float a2 = float(std::atan2(double(left_x - right_x), double(left_y - right_y)));
        const float r = float(W * c.positionVar.cached / overlay_scale);
        SetColour(c.rightCross.colour);
        const float lx = W * left_x, ly = H * left_y, rx = W * right_x, ry = H * right_y;
        DrawLineDotted(float(lx - std::cos(double(a1)) * r), float(ly + std::sin(double(a1)) * r * aspect),
                       float(rx + std::cos(double(a2)) * r), float(ry - std::sin(double(a2)) * r * aspect), kDash);
        DrawLineDotted(float(lx + std::cos(double(a1)) * r), float(ly - std::sin(double(a1)) * r * aspect),
                       float(rx - std::cos(double(a2)) * r), float(ry + std::sin(double(a2)) * r * aspect), kDash);
        const float left_start = float(90.0 - (a1 / kDegree - 90.0));
        const float right_start = float(90.0 - (a2 / kDegree - 90.0));
        DrawEllipse(lx, ly, 2 * r, 2 * r * aspect, 0.0f, 1, 10, left_start, left_start + 180);
        DrawEllipse(rx, ry, 2 * r, 2 * r * aspect, 0.0f, 1, 10, right_start, right_start + 180);
    }

    BubblesOverlayQv &cone = c.coneEditor;
    if (!c.lightSourceCross.shown || !lit) {
        for (int i = 0; i < 2; ++i) cone.handleX[i] = cone.handleY[i] = kParked;
    } else {
        c.lightSourceCross.SetPosition(source_x, source_y);
        c.lightTargetCross.SetPosition(target_x, target_y);
        SetColour(c.lightSourceCross.colour);
        cone.sourceX = source_x;
        cone.sourceY = source_y;
        cone.targetX = target_x;
        cone.targetY = target_y;
        cone.spread = float(c.lightSpread.GetValue(-1.0));
        draw_cone(W * source_x, H * source_y, W * target_x, H * target_y, float(cone.spread * 0.5), 0, 1, 1);
        DrawHandle(cone.handleX[0], cone.handleY[0], cone.grabbed == 1);
        DrawHandle(cone.handleX[1], cone.handleY[1], cone.grabbed == 2);
        DrawCrosshairOverlay(&c.lightSourceCross);
        DrawCrosshairOverlay(&c.lightTargetCross);
    }
    EndRender();
}

void Bubbles::draw_cone(float x0, float y0, float x1, float y1, float halfAngle, int slotA, int slotB,
                        int dotted) {
    const float dx = x1 - x0, dy = y1 - y0;
    const float length = float(std::sqrt(double(dx * dx + dy * dy)));
    const float theta = float(std::atan2(double(dy), double(dx)));
    const float edges[2] = {float(theta - halfAngle * kDegree), float(theta + halfAngle * kDegree)};
    const int slots[2] = {slotA, slotB};
    BubblesOverlayQv &cone = info.coneEditor;
    for (int i = 0; i < 2; ++i) {
        const float ex = float(x0 + length * std::cos(double(edges[i])));
        const float ey = float(y0 + length * std::sin(double(edges[i])));
        if (dotted)
            DrawLineDotted(x0, y0, ex, ey, kDash);
        else
            DrawLine(x0, y0, ex, ey);
        if (slots[i] >= 0 && slots[i] < 2) {
            cone.handleX[slots[i]] = ex;
            cone.handleY[slots[i]] = ey;
        }
    }
}

void Bubbles::HandleInteraction(InterType type, float x, float y) {
    BubblesInfo &c = info;
    c.leftCross.HandleInteraction(type, x, y);
    c.rightCross.HandleInteraction(type, x, y);
    c.emitterLine.HandleInteraction(type, x, y);
    if (light_active(c)) {
        c.lightSourceCross.HandleInteraction(type, x, y);
        c.lightTargetCross.HandleInteraction(type, x, y);
        c.lightLine.HandleInteraction(type, x, y);
    }
    c.coneEditor.HandleInteraction(type, x, y);
}
