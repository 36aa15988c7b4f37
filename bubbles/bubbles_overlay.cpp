// BubblesOverlayQv's pointer handling.
#include "bubbles/bubbles_overlay.h"

// The cone handles' picking and dragging come with the effect's overlay
// drawing; until then the editor ignores the pointer.
void BubblesOverlayQv::HandleInteraction(InterType, float, float) {}

void BubblesOverlayQv::HandleInteractionPlat(InterType, float, float) {}
