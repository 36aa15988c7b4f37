// ColourControlQv: a packed 8-bit host colour, optionally with percent sliders.
#include "framework/controls.h"

namespace {

int clamp15(int component) { return component < 0 ? 0 : component > 32767 ? 32767 : component; }

int byte_of(uint32_t word, int shift) { return static_cast<int>((word >> shift) & 0xFFu); }

}  // namespace

void ColourControlQv::Bound() {
    second_colour = aux ? aux->second_colour : nullptr;
    bool all = aux && aux->sliders[0] && aux->sliders[1] && aux->sliders[2];
    for (int i = 0; i < 3; ++i) sliders[i] = all ? aux->sliders[i] : nullptr;
}

void ColourControlQv::Sync() {
    if (!bound()) return;
    uint32_t word = record()->Value;
    for (int i = 0; i < 3; ++i) {
        int c = byte_of(word, 8 * i);
        cached[i] = (c << 7) | (c >> 1);
    }
    cached[3] = 32767;
}

// Kept on purpose: unlike Sync, the low bits stay empty (255 reads 32640).
void ColourControlQv::GetValue(double, int &red, int &green, int &blue, int &alpha) const {
    if (!bound()) {
        red = cached[0];
        green = cached[1];
        blue = cached[2];
        alpha = cached[3];
        return;
    }
    uint32_t word = record()->Value;
    red = byte_of(word, 0) << 7;
    green = byte_of(word, 8) << 7;
    blue = byte_of(word, 16) << 7;
    alpha = 32767;
}

void ColourControlQv::SetValue(double, int red, int green, int blue, int) {
    if (!bound()) return;
    const int components[3] = {clamp15(red), clamp15(green), clamp15(blue)};
    record()->Value = static_cast<uint32_t>(components[0] >> 7) |
                      static_cast<uint32_t>(components[1] >> 7) << 8 |
                      static_cast<uint32_t>(components[2] >> 7) << 16 | 0xFF000000u;
    sparkControlUpdate(index);
    if (has_sliders()) {
        for (int i = 0; i < 3; ++i) {
            sliders[i]->Value = static_cast<float>((components[i] >> 7) / 2.55);
            sparkControlUpdate(index + 1 + i);
        }
    }
    Sync();
}

// Thawed sliders get 0..100 whatever they had before.
void ColourControlQv::ShowDisabled(bool flag) {
    if (has_sliders()) {
        for (int i = 0; i < 3; ++i) {
            SparkFloatStruct *slider = sliders[i];
            if (flag) {
                slider->Min = slider->Max = slider->Value;
            } else {
                slider->Min = 0.0f;
                slider->Max = 100.0f;
            }
            MarkTitle(slider->Title, flag);
            sparkControlUpdate(index + 1 + i);
        }
    }
    if (second_colour) second_colour->Value = record()->Value;
    sparkControlUpdate(index);
}

void ColourControlQv::HideMoreEntries(bool flag) const {
    if (has_sliders())
        for (int i = 1; i <= 3; ++i) ShowEntry(index + i, flag);
}
