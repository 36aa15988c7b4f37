// The turbulence noise read through a plane made once a step must give the
// very floats the three-level lattice lookup gives, or every shot drifts.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "bubbles/engine/particle_engine.h"

namespace {

// The noise as first written: the permutation applied three times per corner.
struct LatticeNoise {
    const ParticleEngine &engine;
    std::vector<uint8_t> permutation;  // recovered from the planes at z = 0

    static int32_t cell(float v) {
        int32_t i = int32_t(v);
        if (v < 0.0f && float(i) != v) i -= 1;
        return i;
    }
    float corner(int32_t ix, int32_t iy, int32_t iz, float fx, float fy, float fz) const {
        const auto &p = permutation;
        const float *g = engine.unitVectors[p[(ix + p[(iy + p[iz & 255]) & 255]) & 255]];
        return g[0] * fx + g[1] * fy + g[2] * fz;
    }
    static float blend(float t, float a, float b) { return a + t * (b - a); }
    float operator()(float x, float y, float z) const {
        const int32_t ix = cell(x), iy = cell(y), iz = cell(z);
        const float fx0 = x - float(ix), fx1 = fx0 - 1, fy0 = y - float(iy), fy1 = fy0 - 1;
        const float fz0 = z - float(iz), fz1 = fz0 - 1;
        const float wx = fx0 * fx0 * (3 - 2 * fx0), wy = fy0 * fy0 * (3 - 2 * fy0), wz = fz0 * fz0 * (3 - 2 * fz0);
        float layer[2];
        for (int k = 0; k < 2; ++k) {
            const float fz = k ? fz1 : fz0;
            const float a = blend(wx, corner(ix, iy, iz + k, fx0, fy0, fz), corner(ix + 1, iy, iz + k, fx1, fy0, fz));
            const float b =
                blend(wx, corner(ix, iy + 1, iz + k, fx0, fy1, fz), corner(ix + 1, iy + 1, iz + k, fx1, fy1, fz));
            layer[k] = blend(wy, a, b);
        }
        return blend(wz, layer[0], layer[1]);
    }
};

// The permutation is private to the noise; a plane's row tables hold it
// shifted, so it is read back from the planes of the 256 cells of z, checked
// to be one permutation.
std::vector<uint8_t> permutation_from_planes() {
    std::vector<uint8_t> shifts(256);
    const ParticleEngine::NoisePlane origin = ParticleEngine::noise_plane(0.5f);
    // near_rows[r] = P[(r + P[0]) & 255]; with s = P[0] unknown, try each.
    for (int s = 0; s < 256; ++s) {
        std::vector<uint8_t> p(256);
        for (int r = 0; r < 256; ++r) p[(r + s) & 255] = origin.near_rows[r];
        if (p[0] != s) continue;
        bool consistent = true;
        for (int z = 0; z < 256 && consistent; ++z) {
            const ParticleEngine::NoisePlane plane = ParticleEngine::noise_plane(float(z) + 0.25f);
            for (int r = 0; r < 256 && consistent; ++r)
                consistent = plane.near_rows[r] == p[(r + p[z]) & 255] && plane.far_rows[r] == p[(r + p[(z + 1) & 255]) & 255];
        }
        if (consistent) return p;
    }
    return {};
}

bool same_bits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

TEST(Noise, PlanesGiveTheLatticeLookupsFloatsEverywhere) {
    auto engine = std::make_unique<ParticleEngine>();
    const LatticeNoise reference{*engine, permutation_from_planes()};
    ASSERT_EQ(reference.permutation.size(), 256u) << "the planes hold no single permutation";

    std::mt19937 random(24);
    std::uniform_real_distribution<float> anywhere(-700.0f, 700.0f);
    std::uniform_int_distribution<int> lattice(-600, 600);
    int checked = 0, mismatches = 0;
    const float offsets[] = {0.0f, 0.5f, 0.999999f, -0.0f, 1e-7f};
    for (int i = 0; i < 20000; ++i) {
        // Points anywhere, and points on or next to lattice lines, where
        // the floor of negative coordinates and the wrap of 255 matter.
        float x = anywhere(random), y = anywhere(random), z = anywhere(random);
        if (i % 2) {
            x = float(lattice(random)) + offsets[i % 5];
            y = float(lattice(random)) - offsets[(i / 5) % 5];
            z = float(lattice(random)) + offsets[(i / 25) % 5];
        }
        const ParticleEngine::NoisePlane plane = ParticleEngine::noise_plane(z);
        const float fast = engine->gnoise(plane, x, y);
        if (!same_bits(fast, reference(x, y, z)) || !same_bits(engine->gnoise(x, y, z), fast)) ++mismatches;
        ++checked;
    }
    EXPECT_EQ(mismatches, 0) << "of " << checked;
}
