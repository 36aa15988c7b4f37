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

ParticleEngine::NoisePlane ParticleEngine::noise_plane(float z) {
    NoisePlane plane;
    const int32_t iz = lattice_floor(z);
    plane.fz0 = z - float(iz);
    plane.fz1 = plane.fz0 - 1;
    plane.wz = plane.fz0 * plane.fz0 * (3 - 2 * plane.fz0);
    const int32_t near_z = kPermutation[iz & 255], far_z = kPermutation[(iz + 1) & 255];
    for (int32_t row = 0; row < 256; ++row) {
        plane.near_rows[row] = kPermutation[(row + near_z) & 255];
        plane.far_rows[row] = kPermutation[(row + far_z) & 255];
    }
    return plane;
}

float ParticleEngine::gnoise(float x, float y, float z) const { return gnoise(noise_plane(z), x, y); }

// The lattice gradient of corner (ix, iy) in a plane whose permutation of iy
// is rows, dotted with (fx, fy, fz): rows[iy & 255] stands for
// kPermutation[(iy + kPermutation[iz & 255]) & 255], the same in mod 256.
float ParticleEngine::gnoise(const NoisePlane &plane, float x, float y) const {
    const int32_t ix = lattice_floor(x), iy = lattice_floor(y);
    const float fx0 = x - float(ix), fx1 = fx0 - 1;
    const float fy0 = y - float(iy), fy1 = fy0 - 1;
    const float fz0 = plane.fz0, fz1 = plane.fz1;
    const float wx = fx0 * fx0 * (3 - 2 * fx0);
    const float wy = fy0 * fy0 * (3 - 2 * fy0);
    const auto corner = [this, ix](int32_t column, int32_t row_index, float fx, float fy, float fz) {
        const float *g = unitVectors[kPermutation[(ix + column + row_index) & 255]];
        return g[0] * fx + g[1] * fy + g[2] * fz;
    };
    const int32_t row0 = iy & 255, row1 = (iy + 1) & 255;

    float near_z, far_z;
    {
        const uint8_t *rows = plane.near_rows;
        float a = blend(wx, corner(0, rows[row0], fx0, fy0, fz0), corner(1, rows[row0], fx1, fy0, fz0));
        float b = blend(wx, corner(0, rows[row1], fx0, fy1, fz0), corner(1, rows[row1], fx1, fy1, fz0));
        near_z = blend(wy, a, b);
    }
    {
        const uint8_t *rows = plane.far_rows;
        float a = blend(wx, corner(0, rows[row0], fx0, fy0, fz1), corner(1, rows[row0], fx1, fy0, fz1));
        float b = blend(wx, corner(0, rows[row1], fx0, fy1, fz1), corner(1, rows[row1], fx1, fy1, fz1));
        far_z = blend(wy, a, b);
    }
    return blend(plane.wz, near_z, far_z);
}
