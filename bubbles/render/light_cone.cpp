// Why skipping acos gives the same floats. soft_step returns exactly 0 for
// theta <= inner and exactly 1 for theta >= half when inner < half (t is
// then <= 0 or >= 1, rounding being monotone), so only the side of theta
// matters there. acos falls at least as fast as the cosine rises
// (|d acos / dc| >= 1), so a cosine 1e-9 past std::cos(inner), itself within
// 2^-52 of the true value, has a true angle over 1e-9 inside inner, far more
// than the error of std::acos (an ulp, under 1e-15 below pi) and the float
// rounding of theta (monotone, inner and half being floats). The same holds
// at half. Only for 0 <= inner < half <= 1.5, where cos is monotone and the
// angle of a positive cosine lies; otherwise acos is always taken.
#include "bubbles/render/light_cone.h"

#include <cmath>

#include "bubbles/engine/particle_engine.h"

LightCone::LightCone(double spread)
    : half(float(0.008726646261111111 * spread)), inner(float(0.7 * double(half))) {
    if (!(inner >= 0.0f && inner < half && half <= 1.5f)) return;
    constexpr double margin = 1e-9;
    surely_inside = std::cos(double(inner)) + margin;
    surely_outside = std::cos(double(half)) - margin;
}

float LightCone::factor(float cosine) const {
    if (double(cosine) >= surely_inside) return 1.0f;
    if (double(cosine) <= surely_outside) return 0.0f;
    const float theta = float(std::acos(double(cosine)));
    return 1 - ParticleEngine::soft_step(theta, inner, half);
}
