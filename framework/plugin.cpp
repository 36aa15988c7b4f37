// PluginQv, SourceQv and ResultQv construction.
#include "framework/plugin.h"

#include <cstring>

SourceQv::SourceQv()
    : random_access(0), temp_buffer(nullptr), image(nullptr), one(1), clip(0), deep(0), time(0.0) {
    std::memset(adapter_words, 0, sizeof(adapter_words));
}

ResultQv::ResultQv() : image(nullptr) { std::memset(words, 0, sizeof(words)); }

PluginQv::PluginQv() = default;
PluginQv::~PluginQv() = default;
