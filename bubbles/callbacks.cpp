// The effect's control callbacks: requests for the next frame and the
// visibility rule of each switch.
#include "bubbles/bubbles.h"

// Kept on purpose: the buttons only raise requests; the next processed frame
// acts on them, however often they were pressed.
void Bubbles::RestartCB(ControlQv &, double) { restartPending = 1; }

void Bubbles::PreRollCB(ControlQv &, double) { preRollPending = 1; }

void Bubbles::RestartPreRollCB(ControlQv &, double) {
    restartPending = 1;
    preRollPending = 1;
}

void Bubbles::GrowthModeCB(ControlQv &, double) { GrowthModeRule(); }

void Bubbles::DoGravityCB(ControlQv &, double) { GravityRule(); }

void Bubbles::DoFrictionCB(ControlQv &, double) { FrictionRule(); }

void Bubbles::DoTurbulenceCB(ControlQv &, double) { TurbulenceRule(); }

void Bubbles::DoLightCB(ControlQv &, double) {
    LightRule();
    ReflectionsRule();
}

void Bubbles::DoReflectionsCB(ControlQv &, double) { ReflectionsRule(); }

void Bubbles::DoBubblesBurstCB(ControlQv &, double) {
    BurstProbabilityRule();
    SharedBurstRule();
}

void Bubbles::DoCongregateCB(ControlQv &, double) { SharedBurstRule(); }

