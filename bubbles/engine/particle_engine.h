// The particle engine: the set of bubbles and its sprites, births and
// motion, the frame's random draws and noise, and the state one frame hands
// the next. It draws nothing itself: a step hands its render to a
// PartRenderStep the caller made for the frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bubbles/engine/particle_set.h"
#include "bubbles/parameters.h"
#include "framework/image.h"
#include "framework/random_table.h"

// The render of one simulation step, run between the births and the
// advance. The renderer implements it; the engine only calls it, so the
// engine never depends on how bubbles are drawn.
class PartRenderStep {
public:
    virtual void render(tagPARTSET *set) = 0;

protected:
    ~PartRenderStep() = default;
};

class ParticleEngine {
public:
    ParticleEngine();
    ~ParticleEngine();
    ParticleEngine(const ParticleEngine &) = delete;
    ParticleEngine &operator=(const ParticleEngine &) = delete;

    // ------------------------------------------------------------------
    // Frame state: the output the set was last matched to and the requests
    // raised by the buttons, consumed by the next frame.
    // ------------------------------------------------------------------
    int32_t frameWidth = 0;  // output image of the current frame
    int32_t frameHeight = 0;
    float ratioA = 1.0f;     // the output image's two ratio values; ratioB / ratioA is the sprite aspect
    float ratioB = 1.0f;
    float lumpAspect = -400.0f;  // aspect the sprites were last corrected for; -400 forces a rebuild
    int32_t firstFrame = 1;      // no frame processed yet
    float renderScale = 1.0f;    // the output image's scale value
    // Level flags: several presses before a frame count as one.
    int32_t restartPending = 0;
    int32_t preRollPending = 0;
    int32_t requestSpare = 0;  // cleared with the two requests; nothing reads it
    int32_t prevWidth = 0;     // frame size the live particles were last positioned for
    int32_t prevHeight = 0;

    // ------------------------------------------------------------------
    // Tables and the inputs of one step, written before part_set_execute
    // and only read while it renders.
    // ------------------------------------------------------------------
    static constexpr int32_t kRandomTableSize = RandomTableQv::kSize;
    static constexpr int32_t kUnitVectorCount = 256;
    static constexpr int32_t kMaxBirthPositions = 16384;

    float unitVectors[kUnitVectorCount][3];  // gradient table of the noise
    RandomTableQv randomTable;               // this frame's uniform numbers in [0, 1)
    tagPARTSET *partSet = nullptr;

    BubbleParameters parameters;  // control values, refreshed every frame
    int32_t mp_region = 0;        // set while the render bands run
    float pixel_aspect = 1.0f;    // P
    float render_aspect = 1.0f;   // R; R / P is the sprite aspect
    int32_t scale_divisor = 1;    // D, the proxy divisor
    int32_t width = 0;            // W, H: the image the particles live in
    int32_t height = 0;
    ImageQv *birth_matte = nullptr;
    ImageQv *burst_matte = nullptr;
    ImageQv *reflection_image = nullptr;
    ImageQv *output_image = nullptr;

    // ------------------------------------------------------------------
    // One frame (bubbles/engine/frame_processing.cpp).
    // ------------------------------------------------------------------
    // Matches sprites and particles to the output, takes the frame's images
    // as the step's inputs and seeds the frame's draws; false when there is
    // nothing to step (an empty frame, or sprites that could not be made).
    bool prepare_frame(ImageQv *birth, ImageQv *burst, ImageQv *reflection, ImageQv *output, double frame);
    // Carries out pending requests, then advances the set one step along the
    // emitter line, handing each drawn step's render to render.
    void step_frame(double frame, PartRenderStep &render);
    // Rasterises the polyline (xs[i], ys[i]), i < n, into at most maxOut
    // pixel positions; returns how many were written.
    static int find_polyline_pixels(const float *xs, const float *ys, int n, float *outX, float *outY,
                                    int maxOut);
    // Rescales the live particles from (prevWidth, prevHeight) to the
    // current frame size and picks their sprites for renderScale.
    void remap_particles();

    // Refills randomTable with successive ran1fQv draws from *seed (made as
    // they are read), leaving *seed as after all of them.
    void fill_random_table(long *seed);
    // Replaces the set's corrected sprites by copies of its templates
    // squeezed by factor; 0 when one could not be made.
    int part_set_correct_lumps(tagPARTSET *set, float factor);

    // Smooth step and gradient noise.
    static float soft_step(float x, float edge0, float edge1);
    void gradientTabInit(long seed);
    // What the noise works out from z alone, made once a step: a step reads
    // the field at one z for every particle.
    struct NoisePlane {
        float fz0 = 0, fz1 = 0, wz = 0;
        // The lattice permutation of iy & 255 at z's cell and the next one.
        uint8_t near_rows[256] = {};
        uint8_t far_rows[256] = {};
    };
    static NoisePlane noise_plane(float z);
    float gnoise(const NoisePlane &plane, float x, float y) const;
    float gnoise(float x, float y, float z) const;

    // Table-driven random draws; counter is advanced before each read.
    float get_safe_random(int32_t &counter) const;
    float part_rand_01(int32_t &counter) const;
    float part_rand_11(int32_t &counter) const;
    float part_var_1(float base, float variation, int32_t &counter) const;
    void part_var_circle(float &x, float &y, float radius, int32_t &counter) const;
    void part_var_vec(float &vx, float &vy, float magnitude_var, float angle_var, float scale,
                      int32_t &counter) const;
    void part_var_col(const tagPARTSET *set, float &r, float &g, float &b, float &a,
                      int32_t &counter) const;

    // The particle set.
    tagPARTSET *part_set_create(int32_t capacity);
    tagPARTBLOB *part_blob_create(int32_t count);
    void part_blob_destroy(tagPARTBLOB *blob);
    tagPART *part_alloc(tagPARTSET *set);
    void part_set_free_all(tagPARTSET *set);
    void part_set_destroy(tagPARTSET *set);
    void part_info_from_spark(tagPARTSET *set);
    // One step: births, then (unless pre-rolling) render, then the advance.
    int32_t part_set_execute(tagPARTSET *set, const float *xs, const float *ys, int32_t n, int32_t frame,
                             int32_t use_birth_matte, int32_t congregate, PartRenderStep &render);

    // The frame state and live particles, in a versioned little-endian
    // layout; import checks it whole and leaves the engine alone on failure.
    std::vector<uint8_t> export_state() const;
    bool import_state(const uint8_t *data, size_t size);

private:
    bool match_output(const ImageQv *output);
    void run_step(const float *emitter_x, const float *emitter_y, int32_t frame, PartRenderStep &render);

    void part_birth(tagPARTSET *set, const float *xs, const float *ys, int32_t n, int32_t use_birth_matte,
                    int32_t &counter);
    void part_advance(tagPARTSET *set, int32_t frame, int32_t congregate);
    // The pieces of part_advance, for one live particle p.
    float part_friction(const tagPARTSET *set, tagPART *p, int32_t congregate) const;
    void part_grow(const tagPARTSET *set, tagPART *p, float full) const;
    void part_stir(tagPARTSET *set, tagPART *p, const NoisePlane (&planes)[2], float sz) const;
};
