// Test fixture: the fake plug-in loaded and registered, its structures and
// curves put back after every test.
#ifndef TESTS_SPARKHOST_FAKE_PLUGIN_FIXTURE_H
#define TESTS_SPARKHOST_FAKE_PLUGIN_FIXTURE_H

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <exception>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "sparkhost/controls/controls.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/fake_plugin/fake_plugin.h"

// The message of the error the action throws, or "(no error)".
inline std::string error_of(const std::function<void()> &action) {
    try {
        action();
    } catch (const std::exception &error) {
        return error.what();
    }
    return "(no error)";
}

class FakePluginTest : public ::testing::Test {
protected:
    static void *handle() {
        static void *loaded = dlopen(FAKE_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
        return loaded;
    }

    void SetUp() override {
        ASSERT_NE(handle(), nullptr) << dlerror();
        table_ = &sparkhost::register_plugin_controls(handle());
        for (const sparkhost::Control &control : table_->controls()) {
            const auto *bytes = static_cast<const unsigned char *>(control.structure());
            saved_.emplace_back(control.structure(),
                                std::vector<unsigned char>(bytes, bytes + structure_size(control.kind())));
        }
        log_ = static_cast<FakeCallbackLog *>(dlsym(handle(), "fake_callback_log"));
        ASSERT_NE(log_, nullptr);
        *log_ = FakeCallbackLog{};
        sparkhost::clear_curves();
    }

    void TearDown() override {
        for (auto &[structure, bytes] : saved_) std::memcpy(structure, bytes.data(), bytes.size());
        sparkhost::unregister_plugin_controls();
        sparkhost::clear_curves();
    }

    template <typename Structure>
    Structure &exported(const char *name) {
        return *static_cast<Structure *>(dlsym(handle(), name));
    }
    sparkhost::ControlTable &table() { return *table_; }

    static size_t structure_size(sparkhost::ControlKind kind) {
        switch (kind) {
        case sparkhost::ControlKind::Float: return sizeof(SparkFloatStruct);
        case sparkhost::ControlKind::Int: return sizeof(SparkIntStruct);
        case sparkhost::ControlKind::Boolean: return sizeof(SparkBooleanStruct);
        case sparkhost::ControlKind::Push: return sizeof(SparkPushStruct);
        case sparkhost::ControlKind::Pup: return sizeof(SparkPupStruct);
        case sparkhost::ControlKind::Color: return sizeof(SparkColorStruct);
        case sparkhost::ControlKind::String: return sizeof(SparkStringStruct);
        }
        return 0;
    }

    FakeCallbackLog *log_ = nullptr;
    sparkhost::ControlTable *table_ = nullptr;
    std::vector<std::pair<void *, std::vector<unsigned char>>> saved_;
};

#endif  // TESTS_SPARKHOST_FAKE_PLUGIN_FIXTURE_H
