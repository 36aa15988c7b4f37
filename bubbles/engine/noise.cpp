// Gradient noise that stirs the bubbles, its gradient table, and the smooth
// step of the light cone's edge.
#include <cmath>

#include "bubbles/engine/particle_engine.h"
#include "framework/random.h"

namespace {

const uint8_t kPermutation[256] = {
    225, 155, 210, 108, 175, 199, 221, 144, 203, 116, 70,  213, 69,  158, 33,  252, 5,   82,  173, 133,
    222, 139, 174, 27,  9,   71,  90,  246, 75,  130, 91,  191, 169, 138, 2,   151, 194, 235, 81,  7,
    25,  113, 228, 159, 205, 253, 134, 142, 248, 65,  224, 217, 22,  121, 229, 63,  89,  103, 96,  104,
    156, 17,  201, 129, 36,  8,   165, 110, 237, 117, 231, 56,  132, 211, 152, 20,  181, 111, 239, 218,
    170, 163, 51,  172, 157, 47,  80,  212, 176, 250, 87,  49,  99,  242, 136, 189, 162, 115, 44,  43,
    124, 94,  150, 16,  141, 247, 32,  10,  198, 223, 255, 72,  53,  131, 84,  57,  220, 197, 58,  50,
    208, 11,  241, 28,  3,   192, 62,  202, 18,  215, 153, 24,  76,  41,  15,  179, 39,  46,  55,  6,
    128, 167, 23,  188, 106, 34,  187, 140, 164, 73,  112, 182, 244, 195, 227, 13,  35,  77,  196, 185,
    26,  200, 226, 119, 31,  123, 168, 125, 249, 68,  183, 230, 177, 135, 160, 180, 12,  1,   243, 148,
    102, 166, 38,  238, 251, 37,  240, 126, 64,  74,  161, 40,  184, 149, 171, 178, 101, 66,  29,  59,
    146, 61,  254, 107, 42,  86,  154, 4,   236, 232, 120, 21,  233, 209, 45,  98,  193, 114, 78,  19,
    206, 14,  118, 127, 48,  79,  147, 85,  30,  207, 219, 54,  88,  234, 190, 122, 95,  67,  143, 109,
    137, 214, 145, 93,  92,  100, 245, 0,   216, 186, 60,  83,  105, 97,  204, 52,
};

// Lattice cell of a coordinate: floor, as an integer.
int32_t lattice_floor(float v) {
    int32_t i = int32_t(v);
    if (v < 0.0f && float(i) != v) i -= 1;
    return i;
}

float blend(float t, float a, float b) { return a + t * (b - a); }

}  // namespace

float ParticleEngine::soft_step(float x, float edge0, float edge1) {
    float t = (x - edge0) / (edge1 - edge0);
    if (t < 0.0f) return 0.0f;
    if (t > 1.0f) return 1.0f;
    return t * t * (3 - 2 * t);
}

void ParticleEngine::gradientTabInit(long seed) {
    ran1fQv(&seed);  // the seeding draw only initialises
    for (auto &entry : unitVectors) {
        float u1 = ran1fQv(&seed);
        float u2 = ran1fQv(&seed);
        float z = 1 - 2 * u1;
        float theta = float(double(u2) * 6.283185307179586);
        float rho = sqrtf(1 - z * z);
        entry[0] = float(double(rho) * std::cos(double(theta)));
        entry[1] = float(double(rho) * std::sin(double(theta)));
        entry[2] = z;
    }
}

float ParticleEngine::glattice(int32_t ix, int32_t iy, int32_t iz, float fx, float fy, float fz) const {
    const float *g = unitVectors[kPermutation[(ix + kPermutation[(iy + kPermutation[iz & 255]) & 255]) & 255]];
    return g[0] * fx + g[1] * fy + g[2] * fz;
}

float ParticleEngine::gnoise(float x, float y, float z) const {
    const int32_t ix = lattice_floor(x), iy = lattice_floor(y), iz = lattice_floor(z);
    const float fx0 = x - float(ix), fx1 = fx0 - 1;
    const float fy0 = y - float(iy), fy1 = fy0 - 1;
    const float fz0 = z - float(iz), fz1 = fz0 - 1;
    const float wx = fx0 * fx0 * (3 - 2 * fx0);
    const float wy = fy0 * fy0 * (3 - 2 * fy0);
    const float wz = fz0 * fz0 * (3 - 2 * fz0);

    float near_z, far_z;
    {
        float a = blend(wx, glattice(ix, iy, iz, fx0, fy0, fz0), glattice(ix + 1, iy, iz, fx1, fy0, fz0));
        float b = blend(wx, glattice(ix, iy + 1, iz, fx0, fy1, fz0), glattice(ix + 1, iy + 1, iz, fx1, fy1, fz0));
        near_z = blend(wy, a, b);
    }
    {
        float a = blend(wx, glattice(ix, iy, iz + 1, fx0, fy0, fz1), glattice(ix + 1, iy, iz + 1, fx1, fy0, fz1));
        float b = blend(wx, glattice(ix, iy + 1, iz + 1, fx0, fy1, fz1),
                        glattice(ix + 1, iy + 1, iz + 1, fx1, fy1, fz1));
        far_z = blend(wy, a, b);
    }
    return blend(wz, near_z, far_z);
}
