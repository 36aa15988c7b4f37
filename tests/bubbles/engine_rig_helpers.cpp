// A bubble engine with its images, ready for one simulation step in a test.
#include <cstring>

#include "engine_rig.h"

EngineRig::EngineRig(int32_t width, int32_t height)
    : engine(std::make_unique<Bubbles>()),
      output(std::make_unique<ImageQv>(width, height, 1.0f, nullptr, nullptr)),
      birth(std::make_unique<ImageQv>(width, height, 1.0f, nullptr, nullptr)),
      burst(std::make_unique<ImageQv>(width, height, 1.0f, nullptr, nullptr)),
      reflection(std::make_unique<ImageQv>(width, height, 1.0f, nullptr, nullptr)) {
    output->Fill(0, 0, 0, 0);
    birth->Fill(0, 0, 0, 0);
    burst->Fill(0, 0, 0, 0);
    reflection->Fill(0, 0, 0, 0);
    engine->width = width;
    engine->height = height;
    engine->output_image = output.get();
    engine->birth_matte = birth.get();
    engine->burst_matte = burst.get();
    engine->reflection_image = reflection.get();
    engine->part_set_correct_lumps(engine->partSet, 1.0f);
    refresh();
}

void EngineRig::make_still() {
    BubbleParameters &p = engine->parameters;
    p.position_var = 0;
    p.initial_velocity = 0;
    p.velocity_var = 0;
    p.size_var = 0;
    p.friction_on = false;
    p.turbulence_on = false;
    p.gravity_on = false;
    refresh();
}

tagPART *EngineRig::add_particle(float x, float y, int32_t size, int32_t life) {
    tagPART *p = engine->part_alloc(set());
    p->x = p->prev_x = x;
    p->y = p->prev_y = y;
    p->colour[0] = p->colour[1] = p->colour[2] = p->colour[3] = 32767;
    p->life = life;
    p->max_age = 5000;
    p->size = p->size_prev = p->size_birth = size;
    p->next = set()->live_list;
    set()->live_list = p;
    set()->live_count += 1;
    return p;
}

int32_t EngineRig::step(int32_t frame, float emit_x, float emit_y) {
    return engine->part_set_execute(set(), &emit_x, &emit_y, 1, frame, 0, engine->parameters.congregate);
}

std::vector<uint8_t> EngineRig::output_bytes() const {
    const auto *first = reinterpret_cast<const uint8_t *>(output->pixels);
    return std::vector<uint8_t>(first, first + size_t(output->width) * output->height * sizeof(PixelQv));
}

void EngineRig::fill_matte(ImageQv &matte, uint16_t value) { matte.Fill(value, value, value, value); }

int32_t count_changed_pixels(const ImageQv &image, uint16_t red, uint16_t green, uint16_t blue,
                             uint16_t alpha) {
    int32_t changed = 0;
    for (int32_t y = 0; y < image.height; ++y)
        for (int32_t x = 0; x < image.width; ++x) {
            const PixelQv &p = image.rows[y][x];
            if (p.red != red || p.green != green || p.blue != blue || p.alpha != alpha) ++changed;
        }
    return changed;
}
