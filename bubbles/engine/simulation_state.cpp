// The state one frame hands the next: what a host needs to start a shot
// anywhere and still get the same bytes.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "bubbles/engine/particle_engine.h"

namespace {

constexpr char kStateMagic[4] = {'F', 'Z', 'S', 'T'};
// Raise whenever the layout below changes: older states are then refused.
constexpr uint32_t kStateVersion = 1;
constexpr size_t kHeaderBytes = 4 + 4 + 12 * 4 + 4;
constexpr size_t kParticleBytes = 18 * 4;

class Writer {
public:
    explicit Writer(std::vector<uint8_t> &out) : out_(out) {}
    void u32(uint32_t value) {
        for (int i = 0; i < 4; ++i) out_.push_back(uint8_t(value >> (8 * i)));
    }
    void i32(int32_t value) { u32(uint32_t(value)); }
    void f32(float value) {
        uint32_t bits;
        std::memcpy(&bits, &value, 4);
        u32(bits);
    }

private:
    std::vector<uint8_t> &out_;
};

class Reader {
public:
    explicit Reader(const uint8_t *data) : at_(data) {}
    uint32_t u32() {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) value |= uint32_t(at_[i]) << (8 * i);
        at_ += 4;
        return value;
    }
    int32_t i32() { return int32_t(u32()); }
    float f32() {
        const uint32_t bits = u32();
        float value;
        std::memcpy(&value, &bits, 4);
        return value;
    }

private:
    const uint8_t *at_;
};

// What the simulation can produce, from the controls' ranges: "Density" at
// most 10000 and "Lifetime" at most 1000, each varied by up to a tenth,
// "Afterlife" at most 100 and a maximum age of 5000. A state outside these
// was not made by the effect and could misdraw or overrun, so it is refused.
constexpr int32_t kMostBirthsPerFrame = 11000;
constexpr int32_t kLongestLife = 1100;
constexpr int32_t kLongestAfterlife = 100;
constexpr int32_t kOldestMaxAge = 5000;
// A bubble lives at most its life plus an afterlife granted on bursting or
// leaving the gathering region, and every frame births at most the most.
constexpr uint64_t kMostParticles = uint64_t(kMostBirthsPerFrame) * (kLongestLife + kLongestAfterlife + 1);
// Far outside any frame, yet still a whole number of pixels an int holds.
constexpr float kFarthest = 1e9f;

bool within(int32_t value, int32_t low, int32_t high) { return value >= low && value <= high; }

// Reads one particle and says whether the simulation could have made it.
// born_at: how many particles of each age never had their age changed by a
// burst or by leaving the gathering region; those of one age were born in
// one frame, so there are at most the most births of a frame.
bool plausible_particle(Reader &r, std::vector<uint32_t> &born_at) {
    bool ok = true;
    for (int i = 0; i < 10; ++i) {
        const float value = r.f32();
        ok = ok && std::isfinite(value) && (i >= 4 || std::fabs(value) < kFarthest);  // positions first
    }
    const int32_t age = r.i32(), life = r.i32(), max_age = r.i32(), bursting = r.i32(), gather = r.i32();
    ok = ok && within(life, 1, kLongestLife) && within(max_age, 1, kOldestMaxAge) &&
         within(age, -kLongestAfterlife, std::max(life, max_age)) && within(bursting, 0, 1) && within(gather, 0, 2);
    for (int i = 0; i < 3; ++i) ok = within(r.i32(), 0, kPartLumpCount - 1) && ok;  // sprite indices
    if (ok && !bursting && gather != 2) {
        ok = age >= 0 && age < int32_t(born_at.size());
        if (ok) ok = ++born_at[size_t(age)] <= uint32_t(kMostBirthsPerFrame);
    }
    return ok;
}

}  // namespace

std::vector<uint8_t> ParticleEngine::export_state() const {
    std::vector<uint8_t> out;
    Writer w(out);
    for (char c : kStateMagic) out.push_back(uint8_t(c));
    w.u32(kStateVersion);
    w.i32(frameWidth);
    w.i32(frameHeight);
    w.f32(ratioA);
    w.f32(ratioB);
    w.f32(lumpAspect);
    w.i32(firstFrame);
    w.f32(renderScale);
    w.i32(restartPending);
    w.i32(preRollPending);
    w.i32(requestSpare);
    w.i32(prevWidth);
    w.i32(prevHeight);
    uint32_t count = 0;
    for (const tagPART *p = partSet ? partSet->live_list : nullptr; p; p = p->next) ++count;
    w.u32(count);
    out.reserve(out.size() + count * kParticleBytes);
    for (const tagPART *p = partSet ? partSet->live_list : nullptr; p; p = p->next) {
        for (float value : {p->prev_x, p->prev_y, p->x, p->y, p->vx, p->vy, p->colour[0], p->colour[1],
                            p->colour[2], p->colour[3]})
            w.f32(value);
        for (int32_t value : {p->age, p->life, p->max_age, p->bursting, p->gather_state, p->size, p->size_prev,
                              p->size_birth})
            w.i32(value);
    }
    return out;
}

bool ParticleEngine::import_state(const uint8_t *data, size_t size) {
    if (!partSet || !data || size < kHeaderBytes || std::memcmp(data, kStateMagic, 4) != 0) return false;
    Reader r(data + 4);
    if (r.u32() != kStateVersion) return false;
    const int32_t width_in = r.i32(), height_in = r.i32();
    const float ratio_a = r.f32(), ratio_b = r.f32(), lump_aspect = r.f32();
    const int32_t first_frame = r.i32();
    const float render_scale = r.f32();
    const int32_t restart = r.i32(), preroll = r.i32(), spare = r.i32();
    const int32_t prev_width = r.i32(), prev_height = r.i32();
    const uint32_t count = r.u32();
    if (size != kHeaderBytes + size_t(count) * kParticleBytes) return false;
    if (count > kMostParticles || !std::isfinite(ratio_a) || !std::isfinite(ratio_b) ||
        !std::isfinite(lump_aspect) || !std::isfinite(render_scale))
        return false;
    // Every particle checked before anything changes.
    Reader check(data + kHeaderBytes);
    std::vector<uint32_t> born_at(size_t(std::max(kLongestLife, kOldestMaxAge)) + 1, 0);
    for (uint32_t i = 0; i < count; ++i)
        if (!plausible_particle(check, born_at)) return false;

    // Sprites first: the only step that can fail for want of memory.
    if (lump_aspect != -400.0f && !part_set_correct_lumps(partSet, lump_aspect)) {
        lumpAspect = -400.0f;  // the next frame rebuilds them
        return false;
    }
    frameWidth = width_in;
    frameHeight = height_in;
    ratioA = ratio_a;
    ratioB = ratio_b;
    lumpAspect = lump_aspect;
    firstFrame = first_frame;
    renderScale = render_scale;
    restartPending = restart;
    preRollPending = preroll;
    requestSpare = spare;
    prevWidth = prev_width;
    prevHeight = prev_height;

    part_set_free_all(partSet);
    tagPART *tail = nullptr;
    for (uint32_t i = 0; i < count; ++i) {
        tagPART *p = part_alloc(partSet);
        if (!p) break;  // out of memory: keep the bubbles that fit
        p->prev_x = r.f32();
        p->prev_y = r.f32();
        p->x = r.f32();
        p->y = r.f32();
        p->vx = r.f32();
        p->vy = r.f32();
        for (float &channel : p->colour) channel = r.f32();
        p->age = r.i32();
        p->life = r.i32();
        p->max_age = r.i32();
        p->bursting = r.i32();
        p->gather_state = r.i32();
        p->size = r.i32();
        p->size_prev = r.i32();
        p->size_birth = r.i32();
        p->next = nullptr;
        if (tail)
            tail->next = p;
        else
            partSet->live_list = p;
        tail = p;
        partSet->live_count += 1;
    }
    return true;
}
