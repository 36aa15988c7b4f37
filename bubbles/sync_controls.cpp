// SyncControls: bring every control up to date with the host, then show
// only the controls that the current switches make meaningful.
#include "bubbles/bubbles.h"

void Bubbles::SyncControls() {
    for (ControlQv *control : info.controls()) control->Sync();
    GravityRule();
    FrictionRule();
    TurbulenceRule();
    LightRule();
    ReflectionsRule();
    BurstProbabilityRule();
    SharedBurstRule();
    GrowthModeRule();
}

// Each rule reads its switches afresh from the host, so that a callback can
// apply it right after the host changed a value.

void Bubbles::GravityRule() {
    info.gravityOn.Sync();
    const bool hide = !info.gravityOn.GetValue(-1.0);
    info.gravity.Hide(hide);
    info.gravAngle.Hide(hide);
}

void Bubbles::FrictionRule() {
    info.frictionOn.Sync();
    info.friction.Hide(!info.frictionOn.GetValue(-1.0));
}

void Bubbles::TurbulenceRule() {
    info.turbulenceOn.Sync();
    const bool hide = !info.turbulenceOn.GetValue(-1.0);
    info.swirlDens.Hide(hide);
    info.swirlAmp.Hide(hide);
    info.swirlMaxTime.Hide(hide);
}

void Bubbles::LightRule() {
    info.lightOn.Sync();
    const bool hide = !info.lightOn.GetValue(-1.0);
    info.lightSource.Hide(hide);
    info.lightTarget.Hide(hide);
    info.lightZ.Hide(hide);
    info.glistenTight.Hide(hide);
    info.lightSpread.Hide(hide);
    info.lightIntensity.Hide(hide);
    info.minBright.Hide(hide);
    info.shine.Hide(hide);
    info.highlight.Hide(hide);
    info.reflectionsOn.Hide(hide);
    info.lightColour.Hide(hide);
}

// Reflections are lit by the light: without it their intensity is moot even
// while the switch stays on.
void Bubbles::ReflectionsRule() {
    info.lightOn.Sync();
    info.reflectionsOn.Sync();
    const bool show = info.lightOn.GetValue(-1.0) && info.reflectionsOn.GetValue(-1.0);
    info.refIntensity.Hide(!show);
}

void Bubbles::BurstProbabilityRule() {
    info.burstOn.Sync();
    info.burstProbability.Hide(!info.burstOn.GetValue(-1.0));
}

// Quantity, extent and afterlife serve gathering as well as bursting.
void Bubbles::SharedBurstRule() {
    info.burstOn.Sync();
    info.congregate.Sync();
    const bool show = info.burstOn.GetValue(-1.0) || info.congregate.GetValue(-1.0);
    info.burstQuantity.Hide(!show);
    info.burstExtent.Hide(!show);
    info.afterlife.Hide(!show);
}

// Assorted sizes never grow, so the time to full size means nothing there.
void Bubbles::GrowthModeRule() {
    constexpr long kAssorted = 1;
    info.timeMaxSize.Hide(info.growthMode.GetValue(-1.0) == kAssorted);
}
