// The particle set's storage: blocks of particles, the free and live lists,
// and the sprite tables it owns.
#include <cstdlib>
#include <cstring>

#include "bubbles/engine/particle_engine.h"
#include "framework/messages.h"

namespace {

void free_lump_table(tagPARTLUMP **table, int32_t count) {
    if (!table) return;
    for (int32_t i = 0; i < count; ++i) part_lump_free(table[i]);
    std::free(table);
}

}  // namespace

tagPARTBLOB *ParticleEngine::part_blob_create(int32_t count) {
    if (count < 1) {
        PrintError("part_blob_create(): a block needs at least one particle, not %d\n", count);
        return nullptr;
    }
    auto *blob = static_cast<tagPARTBLOB *>(std::calloc(1, sizeof(tagPARTBLOB)));
    if (!blob) return nullptr;
    blob->particles = static_cast<tagPART *>(std::calloc(size_t(count), sizeof(tagPART)));
    if (!blob->particles) {
        std::free(blob);
        return nullptr;
    }
    blob->count = count;
    for (int32_t i = 0; i + 1 < count; ++i) blob->particles[i].next = &blob->particles[i + 1];
    return blob;
}

void ParticleEngine::part_blob_destroy(tagPARTBLOB *blob) {
    if (!blob) return;
    std::free(blob->particles);
    std::free(blob);
}

tagPARTSET *ParticleEngine::part_set_create(int32_t capacity) {
    auto *set = static_cast<tagPARTSET *>(std::calloc(1, sizeof(tagPARTSET)));
    if (!set) return nullptr;
    set->blob_capacity = capacity;
    set->blobs = part_blob_create(capacity);
    if (!set->blobs) {
        part_set_destroy(set);
        return nullptr;
    }
    set->blob_count = 1;
    set->lump_count = kPartLumpCount;
    set->lumps = static_cast<tagPARTLUMP **>(std::calloc(size_t(set->lump_count), sizeof(tagPARTLUMP *)));
    if (!set->lumps) {
        part_set_destroy(set);
        return nullptr;
    }
    set->lumps_corrected = nullptr;
    set->lump_step = 40.0f / float(set->lump_count - 1);
    for (int32_t i = 0; i < set->lump_count; ++i) {
        float radius = float(i * set->lump_step + 0.5);
        if (radius < 2.0f) radius = 2.0f;
        set->lumps[i] = part_lump_create(radius, 1.0f, 1.0f);
        if (!set->lumps[i]) {
            part_set_destroy(set);
            return nullptr;
        }
    }
    set->free_list = set->blobs->particles;
    set->live_count = 0;
    return set;
}

tagPART *ParticleEngine::part_alloc(tagPARTSET *set) {
    if (!set->free_list) {
        tagPARTBLOB *blob = part_blob_create(set->blob_capacity);
        if (!blob) return nullptr;
        blob->next = set->blobs;
        set->blobs = blob;
        set->blob_count += 1;
        set->free_list = blob->particles;
    }
    tagPART *particle = set->free_list;
    set->free_list = particle->next;
    std::memset(particle, 0, sizeof(tagPART));
    return particle;
}

void ParticleEngine::part_set_free_all(tagPARTSET *set) {
    if (!set || !set->live_list) return;
    tagPART *last = set->live_list;
    while (last->next) last = last->next;
    last->next = set->free_list;
    set->free_list = set->live_list;
    set->live_list = nullptr;
    set->live_count = 0;
}

void ParticleEngine::part_set_destroy(tagPARTSET *set) {
    if (!set) return;
    for (tagPARTBLOB *blob = set->blobs; blob;) {
        tagPARTBLOB *next = blob->next;
        part_blob_destroy(blob);
        blob = next;
    }
    free_lump_table(set->lumps_corrected, set->lump_count);
    free_lump_table(set->lumps, set->lump_count);
    std::free(set);
}

int ParticleEngine::part_set_correct_lumps(tagPARTSET *set, float factor) {
    free_lump_table(set->lumps_corrected, set->lump_count);
    set->lumps_corrected =
        static_cast<tagPARTLUMP **>(std::calloc(size_t(set->lump_count), sizeof(tagPARTLUMP *)));
    if (!set->lumps_corrected) return 0;
    for (int32_t i = 0; i < set->lump_count; ++i) {
        set->lumps_corrected[i] = part_aspect_correct(set->lumps[i], factor);
        if (!set->lumps_corrected[i]) return 0;
    }
    return 1;
}
