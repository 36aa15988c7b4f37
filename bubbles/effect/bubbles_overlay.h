// BubblesOverlayQv: the light cone's editor in the viewer, two handles on the
// cone's edges that set "Light Spread".
#pragma once

#include <cstdint>

#include "framework/overlay_widgets.h"

// Bound like every widget to one host entry (index and record of "Light
// Spread"). Positions are fractions of the frame; handles are in viewer
// pixels as last drawn.
class BubblesOverlayQv : public OverlayControlQv {
public:
    void HandleInteraction(InterType type, float x, float y) override;
    void HandleInteractionPlat(InterType type, float x, float y) override;

    int32_t grabbed = 0;  // handle being dragged: 0 none, 1 or 2
    int32_t hover = 0;    // handle under the pointer: 0 none, 1 or 2
    OverlayQv *overlay = nullptr;
    float spread = 0.0f;  // full cone angle in degrees
    float sourceX = 0.0f, sourceY = 0.0f;
    float targetX = 0.0f, targetY = 0.0f;
    float handleX[2] = {0.0f, 0.0f};
    float handleY[2] = {0.0f, 0.0f};
};

// Normalises the 3-vector v in place and returns its length; a vector whose
// largest component is below 1e-10 becomes (0, 0, 0).
float vecnorm(float v[3]);
