// BubblesOverlayQv's pointer handling: picking and dragging the light cone's
// edge handles, which set "Light Spread".
#include "bubbles/effect/bubbles_overlay.h"

#include <cmath>

#include "spark/spark.h"

namespace {
// Radians per degree, deliberately 3.141592654 / 180 rather than the exact value.
constexpr double kDegree = 0.017453292522222223;
}  // namespace

float vecnorm(float v[3]) {
    float m = std::fabs(v[0]);
    if (std::fabs(v[1]) > m) m = std::fabs(v[1]);
    if (std::fabs(v[2]) > m) m = std::fabs(v[2]);
    if (m < 1e-10) {
        v[0] = v[1] = v[2] = 0.0f;
        return 0.0f;
    }
    // Three Newton steps from the largest component: close enough for a
    // direction, and the same on every machine.
    const float s = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
    const float g1 = (m + s / m) / 2;
    const float g2 = (g1 + s / g1) / 2;
    const float length = (g2 + s / g2) / 2;
    const float inverse = 1 / length;
    for (int i = 0; i < 3; ++i) v[i] *= inverse;
    return length;
}

void BubblesOverlayQv::HandleInteraction(InterType type, float x, float y) {
    if (!overlay) return;
    const float t = overlay->GrabHandleSize();
    auto under = [&](int i) { return std::fabs(handleX[i] - x) < t && std::fabs(handleY[i] - y) < t; };
    switch (type) {
    case InterMove:
        hover = under(0) ? 1 : under(1) ? 2 : 0;
        break;
    case InterPress:
        for (int i = 0; i < 2; ++i)
            if (under(i)) hover = grabbed = i + 1;
        break;
    case InterDrag:
        if (grabbed == 1 || grabbed == 2) {
            const float W = float(overlay->viewer_width), H = float(overlay->viewer_height);
            float u[3] = {x - W * sourceX, y - H * sourceY, 0.0f};
            float v[3] = {W * targetX - W * sourceX, H * targetY - H * sourceY, 0.0f};
            vecnorm(u);
            vecnorm(v);
            float c = u[0] * v[0] + u[1] * v[1] + u[2] * v[2];
            // Rounding can carry the cosine of parallel directions past 1.
            if (c > 1.0f) c = 1.0f;
            if (c < -1.0f) c = -1.0f;
            spread = float(2 * std::acos(double(c)) / kDegree);
        }
        break;
    case InterRelease:
        HandleInteractionPlat(InterRelease, x, y);
        grabbed = 0;
        return;
    default:
        return;
    }
    HandleInteractionPlat(type, x, y);
}

void BubblesOverlayQv::HandleInteractionPlat(InterType type, float, float) {
    if (type != InterDrag || (grabbed != 1 && grabbed != 2) || !record) return;
    record->Value = spread;
    sparkControlUpdate(index);
}
