// The bubble effect: the effect instance with its controls, callbacks,
// visibility rules and overlay. It owns the particle engine and makes a
// renderer for each frame (bubbles/render/bubble_renderer.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "bubbles/effect/bubbles_info.h"
#include "bubbles/engine/particle_engine.h"
#include "framework/controls.h"
#include "framework/image.h"
#include "framework/overlay.h"
#include "framework/plugin.h"

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
    Bubbles() = default;
    ~Bubbles() override = default;
    Bubbles(const Bubbles &) = delete;
    Bubbles &operator=(const Bubbles &) = delete;

    // ------------------------------------------------------------------
    // The effect instance: controls, requests and callbacks.
    // ------------------------------------------------------------------
    BubblesInfo info;

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

    // Copies the controls' per-frame caches into the engine's parameters, in
    // effect units.
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
    // The particle engine the effect steps: its parameters are read from
    // the controls, its requests raised by the buttons.
    // ------------------------------------------------------------------
    ParticleEngine engine;

    // One frame: a copy of the scene with the engine's set stepped and drawn
    // over it by a renderer made for the frame. The mattes and the
    // reflection may be null.
    void process_frame_images(ImageQv *scene, ImageQv *birth, ImageQv *burst, ImageQv *reflection,
                              ImageQv *output, double frame);
    // Advances the set exactly as process_frame_images would, with every
    // random draw of the render, but reads no scene or reflection and
    // writes no pixel: the output only gives the frame's size and ratios.
    void simulate_frame_images(ImageQv *birth, ImageQv *burst, ImageQv *output, double frame);
    // The engine's frame state and live particles (see ParticleEngine).
    std::vector<uint8_t> export_state() const;
    bool import_state(const uint8_t *data, size_t size);
    bool drawing = true;  // false while simulate_frame_images runs

private:
    // The visibility rules: whether a group is shown, reading its switches
    // afresh from the host, and showing or hiding every control of it.
    bool GroupShown(VisibilityGroup group);
    void ShowGroup(VisibilityGroup group);
};
