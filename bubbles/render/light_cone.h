// The light cone's soft edge, worked out once a step for every bubble: the
// share of the light a bubble at angle theta from the cone's axis gets,
//   1 - soft_step(theta, inner, half),  theta = acos(cosine),
// with acos taken only where the answer is not already known.
#pragma once

struct LightCone {
    // spread: the cone's full opening in degrees, as the control has it.
    explicit LightCone(double spread = 0.0);

    float factor(float cosine) const;

    float half;   // the cone's half opening, radians
    float inner;  // where the edge starts to soften
    // Cosines at or above surely_inside are inside the inner cone (factor
    // 1), at or below surely_outside outside the cone (factor 0).
    double surely_inside = 2.0;
    double surely_outside = -2.0;
};
