// The effect's control callbacks: requests for the next frame and the
// visibility rule of each switch.
#include "bubbles/bubbles.h"

// Kept on purpose: the buttons only raise requests; the next processed frame
// acts on them, however often they were pressed.
void Bubbles::RestartCB(ControlQv &, double) { engine.restartPending = 1; }

void Bubbles::PreRollCB(ControlQv &, double) { engine.preRollPending = 1; }

void Bubbles::RestartPreRollCB(ControlQv &, double) {
    engine.restartPending = 1;
    engine.preRollPending = 1;
}

void Bubbles::GrowthModeCB(ControlQv &, double) { ShowGroup(VisibilityGroup::Growing); }

void Bubbles::DoGravityCB(ControlQv &, double) { ShowGroup(VisibilityGroup::Gravity); }

void Bubbles::DoFrictionCB(ControlQv &, double) { ShowGroup(VisibilityGroup::Friction); }

void Bubbles::DoTurbulenceCB(ControlQv &, double) { ShowGroup(VisibilityGroup::Turbulence); }

void Bubbles::DoLightCB(ControlQv &, double) {
    ShowGroup(VisibilityGroup::Light);
    ShowGroup(VisibilityGroup::LitReflections);
}

void Bubbles::DoReflectionsCB(ControlQv &, double) { ShowGroup(VisibilityGroup::LitReflections); }

void Bubbles::DoBubblesBurstCB(ControlQv &, double) {
    ShowGroup(VisibilityGroup::Burst);
    ShowGroup(VisibilityGroup::BurstOrGather);
}

void Bubbles::DoCongregateCB(ControlQv &, double) { ShowGroup(VisibilityGroup::BurstOrGather); }
