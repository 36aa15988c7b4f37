// A bubble engine with its images, ready for one simulation step in a test.
#include "engine_rig.h"

EngineRig::EngineRig(int32_t width, int32_t height) : engine(std::make_unique<ParticleEngine>()) {
    for (std::unique_ptr<ImageQv> *image : {&output, &birth, &burst, &reflection}) {
        *image = std::make_unique<ImageQv>(width, height, 1.0f, nullptr, nullptr);
        (*image)->Fill(0, 0, 0, 0);
    }
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
    configure([](BubbleParameters &p) {
        p.position_var = p.initial_velocity = p.velocity_var = p.size_var = 0;
        p.friction_on = p.turbulence_on = p.gravity_on = false;
    });
}

void EngineRig::render() {
    BubbleRenderer drawing = renderer();
    drawing.part_render_begin(set());
    drawing.part_render_bands();
    drawing.part_render_end();
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
    BubbleRenderer drawing = renderer();
    return engine->part_set_execute(set(), &emit_x, &emit_y, 1, frame, 0, engine->parameters.congregate, drawing);
}

std::vector<uint8_t> EngineRig::output_bytes() const {
    const auto *first = reinterpret_cast<const uint8_t *>(output->pixels);
    return std::vector<uint8_t>(first, first + size_t(output->width) * output->height * sizeof(PixelQv));
}

int32_t EngineRig::drawn_pixels() const {
    int32_t drawn = 0;
    for (int32_t y = 0; y < output->height; ++y)
        for (int32_t x = 0; x < output->width; ++x) {
            const PixelQv &p = output->rows[y][x];
            drawn += p.red || p.green || p.blue || p.alpha;
        }
    return drawn;
}
