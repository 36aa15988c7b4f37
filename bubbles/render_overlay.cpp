// Bubbles' viewer overlay: drawing its widgets and handling the pointer.
#include "bubbles/bubbles.h"

// The emitter, light and cone widgets are drawn and dragged here once the
// overlay is written; until then the viewer shows nothing of the effect.
void Bubbles::RenderOverlay() {}

void Bubbles::HandleInteraction(InterType, float, float) {}
