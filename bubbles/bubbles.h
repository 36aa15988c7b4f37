// The bubble effect: the effect instance with its controls and callbacks, and
// the particle engine's state and operations.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "bubbles/render/bubble_shade.h"
#include "bubbles/effect/bubbles_info.h"
#include "bubbles/parameters.h"
#include "bubbles/engine/particle_set.h"
#include "bubbles/render/sprite.h"
#include "framework/controls.h"
#include "framework/image.h"
#include "framework/overlay.h"
#include "framework/plugin.h"
#include "framework/random_table.h"

// Which switches show a control (the "shown" column of the control table).
enum class VisibilityGroup {
    Always,
    Gravity,         // while "Gravity" is on
    Friction,        // while "Friction" is on
    Turbulence,      // while "Turbulence" is on
    Light,           // while "Light" is on
    LitReflections,  // while "Light" and "Reflections" are both on
    Burst,           // while "Bubbles Burst" is on
    BurstOrGather,   // while "Bubbles Burst" or "Congregate" is on
    Growing,         // while the growth mode is not Assorted
};

class Bubbles : public PluginQv, public OverlayQv {
public:
    Bubbles();
    ~Bubbles() override;
    Bubbles(const Bubbles &) = delete;
    Bubbles &operator=(const Bubbles &) = delete;

    // ------------------------------------------------------------------
    // The effect instance: controls, frame state, requests and callbacks.
    // ------------------------------------------------------------------
    BubblesInfo info;
    int32_t frameWidth = 0;  // output image of the current frame
    int32_t frameHeight = 0;
    float ratioA = 1.0f;     // the output image's two ratio values; ratioB / ratioA is the sprite aspect
    float ratioB = 1.0f;
    float lumpAspect = -400.0f;  // aspect the sprites were last corrected for; -400 forces a rebuild
    int32_t firstFrame = 1;      // no frame processed yet
    float renderScale = 1.0f;    // the output image's scale value
    // Requests raised by the buttons and consumed by the next frame. Level
    // flags: several presses before a frame count as one.
    int32_t restartPending = 0;
    int32_t preRollPending = 0;
    int32_t requestSpare = 0;  // cleared with the two requests; nothing reads it
    int32_t prevWidth = 0;     // frame size the live particles were last positioned for
    int32_t prevHeight = 0;

    void ProcessFrame() override;
    // Whether the frame reads input clip `index` (1 birth matte, 2 burst or
    // gather matte, 3 reflection) with the controls as last read; the scene
    // is always read. A clip no pixel depends on need not be converted.
    bool reads_input(int index) const;
    // Syncs every control, then applies the visibility rules.
    void SyncControls() override;
    void RenderOverlay() override;
    void HandleInteraction(InterType type, float x, float y) override;
    // Draws the light cone's edges from (x0, y0), halfAngle degrees either
    // side of the line to (x1, y1) and as long as it, and stores their ends
    // in the cone editor's handle slots slotA and slotB.
    void draw_cone(float x0, float y0, float x1, float y1, float halfAngle, int slotA, int slotB, int dotted);

    // Copies the controls' per-frame caches into parameters, in effect units.
    void ReadControls();

    // Control callbacks, called by the host adapter after it synchronised
    // the control that changed; the value is that control's.
    void RestartCB(ControlQv &control, double value);
    void PreRollCB(ControlQv &control, double value);
    void RestartPreRollCB(ControlQv &control, double value);
    void GrowthModeCB(ControlQv &control, double value);
    void DoGravityCB(ControlQv &control, double value);
    void DoFrictionCB(ControlQv &control, double value);
    void DoTurbulenceCB(ControlQv &control, double value);
    void DoLightCB(ControlQv &control, double value);
    void DoReflectionsCB(ControlQv &control, double value);
    void DoBubblesBurstCB(ControlQv &control, double value);
    void DoCongregateCB(ControlQv &control, double value);
    // Requests a restart and loads the chosen preset.
    void DemosCB(ControlQv &control, double time);

    // ------------------------------------------------------------------
    // Particle engine: tables, frame inputs and the operations of the
    // simulation, the sprites and the renderer.
    // ------------------------------------------------------------------
    static constexpr int32_t kRandomTableSize = RandomTableQv::kSize;
    static constexpr int32_t kUnitVectorCount = 256;

    float unitVectors[kUnitVectorCount][3];  // gradient table of the noise
    RandomTableQv randomTable;               // this frame's uniform numbers in [0, 1)
    tagPARTSET *partSet = nullptr;

    // Inputs of one step, written before part_set_execute and only read
    // while it renders.
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

    // Refills randomTable with successive ran1fQv draws from *seed (made as
    // they are read), leaving *seed as after all of them.
    void fill_random_table(long *seed);

    // Sprites.
    static tagPARTLUMP *part_lump_create(float radius, float rim, float unused);
    static tagPARTLUMP *part_aspect_correct(const tagPARTLUMP *lump, float factor);
    static int p_resizeimage(const uint32_t *src, int32_t src_width, int32_t src_height, uint32_t *dst,
                             int32_t dst_width, int32_t dst_height, int32_t mode);
    static void p_resample(const uint8_t *src, uint8_t *dst, int32_t n, int32_t m, int32_t src_stride,
                           int32_t dst_stride, int32_t mode);
    static void p_resample(const float *src, int32_t w, int32_t h, float *dst, int32_t w2, int32_t h2);
    // Replaces the set's corrected sprites by copies of its templates
    // squeezed by factor; 0 when one could not be made.
    int part_set_correct_lumps(tagPARTSET *set, float factor);

    // Smooth step and gradient noise.
    static float soft_step(float x, float edge0, float edge1);
    void gradientTabInit(long seed);
    float glattice(int32_t ix, int32_t iy, int32_t iz, float fx, float fy, float fz) const;
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
    int32_t part_set_execute(tagPARTSET *set, const float *xs, const float *ys, int32_t n, int32_t frame,
                             int32_t use_birth_matte, int32_t congregate);

    // Rendering. part_render decides but never writes the particle: it
    // returns 1 and the bubble's new age when the bubble bursts now.
    void mp_PartRender(long first, long last);
    int32_t part_render(const tagPARTSET *set, const tagPART *particle, long first, long last,
                        int32_t &counter, int32_t &burst_age);
    void part_anti_aliased_lump(const SpritePlacement &at, const BubbleShade &shade) const;
    // Scatters the sprite's pixels outwards by up to extent, keeping a share
    // of them; the draws advance counter the same in every band.
    void part_exploding_lump(const SpritePlacement &at, const BubbleShade &shade, float extent, float keep,
                             int32_t &counter) const;

    // The render step of part_set_execute, in its three stages, so that a
    // caller may run the bands its own way between begin and end.
    void part_render_begin(tagPARTSET *set);
    void part_render_bands();
    void part_render_end();

private:
    // The visibility rules: whether a group is shown, reading its switches
    // afresh from the host, and showing or hiding every control of it.
    bool GroupShown(VisibilityGroup group);
    void ShowGroup(VisibilityGroup group);

    void part_birth(tagPARTSET *set, const float *xs, const float *ys, int32_t n, int32_t use_birth_matte,
                    int32_t &counter);
    void part_advance(tagPARTSET *set, int32_t frame, int32_t congregate);
    // Blends one sprite pixel of coverage I and normal (nx, ny) into target.
    static void shade_pixel(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &shade);
    // The same with the pixel's lit term k and highlight h worked out.
    static void blend_pixel(PixelQv &target, int32_t I, float nx, float ny, const BubbleShade &shade, int64_t k,
                            int64_t h);

    // A burst decided during the render, applied once the bands have joined.
    struct BurstDecision {
        tagPART *particle;
        int32_t age;
    };
    // A bubble as the bands see it: where it starts in the frame's draws and
    // the rows it can touch (all rows when unsure).
    struct PlannedBubble {
        tagPART *particle;
        int32_t counter;
        int32_t first;
        int32_t last;
    };
    void plan_rows();
    std::vector<PlannedBubble> planned;
    bool rows_planned = false;
    tagPARTSET *render_set = nullptr;
    std::atomic<bool> burst_recorder_taken{false};
    std::vector<BurstDecision> burst_decisions;

public:
    // ------------------------------------------------------------------
    // Frame processing: what one frame does with its images. Its caches
    // and requests are the frame state declared with the instance above.
    // ------------------------------------------------------------------
    static constexpr int32_t kMaxBirthPositions = 16384;

    // One frame: keeps sprites and particles matched to the output, carries
    // out pending requests, advances the set one step and draws it over a
    // copy of the scene. The mattes and the reflection may be null.
    void process_frame_images(ImageQv *scene, ImageQv *birth, ImageQv *burst, ImageQv *reflection,
                              ImageQv *output, double frame);
    // Rasterises the polyline (xs[i], ys[i]), i < n, into at most maxOut
    // pixel positions; returns how many were written.
    static int find_polyline_pixels(const float *xs, const float *ys, int n, float *outX, float *outY,
                                    int maxOut);
    // Rescales the live particles from (prevWidth, prevHeight) to the
    // current frame size and picks their sprites for renderScale.
    void remap_particles();

    // ------------------------------------------------------------------
    // Simulation without drawing, and the state one frame hands the next
    // (bubbles/engine/simulation_state.cpp).
    // ------------------------------------------------------------------
    // Advances the set exactly as process_frame_images would, with every
    // random draw of the render, but reads no scene or reflection and
    // writes no pixel: the output only gives the frame's size and ratios.
    void simulate_frame_images(ImageQv *birth, ImageQv *burst, ImageQv *output, double frame);
    // The frame state and live particles, in a versioned little-endian
    // layout; import checks it whole and leaves the effect alone on failure.
    std::vector<uint8_t> export_state() const;
    bool import_state(const uint8_t *data, size_t size);
    // The render step of a frame being simulated: one band without rows
    // walks every bubble's decisions and draws, so the bursts and the
    // random counters come out as in a drawn frame.
    void part_render_decisions();
    bool drawing = true;  // false while simulate_frame_images runs
};
