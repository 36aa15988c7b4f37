// Discovery and handling of a plug-in's exported control structures.
#include "sparkhost/controls/controls.h"

#include "sparkhost/controls/text_match.h"

#include <dlfcn.h>

#include <algorithm>
#include <cctype>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

namespace sparkhost {
namespace {

constexpr ControlKind kAllKinds[] = {ControlKind::Float, ControlKind::Int,   ControlKind::Boolean,
                                     ControlKind::Push,  ControlKind::Pup,   ControlKind::Color,
                                     ControlKind::String};

// The text of a title format before its first conversion, without the
// separator that leads into the value: "Density: %.2f" gives "Density".
std::string title_stem(const char *format) {
    if (!format) return {};
    std::string stem;
    for (const char *c = format; *c; ++c) {
        if (*c == '%') {
            if (c[1] != '%') break;
            ++c;
        }
        stem += *c;
    }
    stem = trim(stem);
    while (!stem.empty() && stem.back() == ':') stem = trim(stem.substr(0, stem.size() - 1));
    return stem;
}

// A string title with its "%s" filled in; other conversions are shown as
// written rather than handed to printf with arguments it does not have.
std::string fill_string_title(const char *format, const char *value) {
    if (!format) return value;
    std::string out;
    for (const char *c = format; *c; ++c) {
        if (c[0] == '%' && c[1] == 's') {
            out += value;
            ++c;
        } else if (c[0] == '%' && c[1] == '%') {
            out += '%';
            ++c;
        } else {
            out += *c;
        }
    }
    return out;
}

std::string string_value(const SparkStringStruct *s) {
    return std::string(s->Value, strnlen(s->Value, SPARK_STRING_LENGTH));
}

int pup_count(const SparkPupStruct *pup) {
    return std::clamp<int>(pup->Count, 0, SPARK_PUP_MAX_ENTRIES);
}

// The label every entry of a list shares before its colon ("Growth Mode"),
// or empty when they do not share one.
std::string list_stem(const SparkPupStruct *pup) {
    std::string common;
    int count = pup_count(pup);
    for (int i = 0; i < count; ++i) {
        const char *entry = pup->Titles[i];
        const char *colon = entry ? std::strchr(entry, ':') : nullptr;
        if (!colon) return {};
        std::string stem = trim(std::string_view(entry, static_cast<size_t>(colon - entry)));
        if (stem.empty() || (i > 0 && stem != common)) return {};
        common = stem;
    }
    return common;
}

bool whole(double value) { return std::trunc(value) == value; }

// Shortest text that reads back as the same number; floats at float
// precision so that 0.05f prints as 0.05.
std::string format_number(double value, bool single = false) {
    char text[40];
    if (whole(value) && std::fabs(value) < 1e15) {
        std::snprintf(text, sizeof text, "%.0f", value);
        return text;
    }
    for (int precision = 1; precision <= 17; ++precision) {
        std::snprintf(text, sizeof text, "%.*g", precision, value);
        double back = std::strtod(text, nullptr);
        if (single ? static_cast<float>(back) == static_cast<float>(value) : back == value) break;
    }
    return text;
}

std::unique_ptr<ControlTable> &registry() {
    static std::unique_ptr<ControlTable> table;
    return table;
}

}  // namespace

const char *kind_name(ControlKind kind) {
    switch (kind) {
    case ControlKind::Float: return "Float";
    case ControlKind::Int: return "Int";
    case ControlKind::Boolean: return "Boolean";
    case ControlKind::Push: return "Push";
    case ControlKind::Pup: return "Pup";
    case ControlKind::Color: return "Color";
    case ControlKind::String: return "String";
    }
    return "?";
}

int page_of(int number) {
    if (number < SPARK_FIRST_PAGE_CONTROL || number > SPARK_MAX_CONTROL) return kClipPage;
    return (number - SPARK_FIRST_PAGE_CONTROL) / SPARK_CONTROLS_PER_PAGE;
}

// ---------------------------------------------------------------------------
// Control

Control::Control(ControlKind kind, int number, void *structure)
    : kind_(kind), number_(number), structure_(structure) {
    switch (kind_) {
    case ControlKind::Float: name_ = title_stem(static_cast<SparkFloatStruct *>(structure_)->Title); break;
    case ControlKind::Int: name_ = title_stem(static_cast<SparkIntStruct *>(structure_)->Title); break;
    case ControlKind::Boolean: name_ = title_stem(static_cast<SparkBooleanStruct *>(structure_)->Title); break;
    case ControlKind::Push: name_ = title_stem(static_cast<SparkPushStruct *>(structure_)->Title); break;
    case ControlKind::Pup: name_ = list_stem(static_cast<SparkPupStruct *>(structure_)); break;
    case ControlKind::String: name_ = title_stem(static_cast<SparkStringStruct *>(structure_)->Title); break;
    case ControlKind::Color: break;  // named after its sliders once the table is known
    }
    if (name_.empty()) name_ = std::string(kind_name(kind_)) + " " + std::to_string(number_);
}

std::string Control::symbol() const { return std::string("Spark") + kind_name(kind_) + std::to_string(number_); }

std::string Control::label() const { return "control " + std::to_string(number_) + " \"" + name_ + "\""; }

std::string Control::title() const {
    if (kind_ == ControlKind::Pup) {
        auto *pup = static_cast<const SparkPupStruct *>(structure_);
        if (pup->Value >= 0 && pup->Value < pup_count(pup) && pup->Titles[pup->Value])
            return trim(pup->Titles[pup->Value]);
    } else if (kind_ == ControlKind::String) {
        auto *s = static_cast<const SparkStringStruct *>(structure_);
        return trim(fill_string_title(s->Title, string_value(s).c_str()));
    }
    return name_;
}

bool Control::has_value() const { return kind_ != ControlKind::Push && kind_ != ControlKind::String; }

double Control::value() const {
    switch (kind_) {
    case ControlKind::Float: return static_cast<const SparkFloatStruct *>(structure_)->Value;
    case ControlKind::Int: return static_cast<const SparkIntStruct *>(structure_)->Value;
    case ControlKind::Boolean: return static_cast<const SparkBooleanStruct *>(structure_)->Value ? 1.0 : 0.0;
    case ControlKind::Pup: return static_cast<const SparkPupStruct *>(structure_)->Value;
    case ControlKind::Color: return static_cast<const SparkColorStruct *>(structure_)->Value;
    case ControlKind::Push:
    case ControlKind::String: break;
    }
    return 0.0;
}

std::optional<ValueRange> Control::range() const {
    switch (kind_) {
    case ControlKind::Float: {
        auto *f = static_cast<const SparkFloatStruct *>(structure_);
        return ValueRange{f->Min, f->Max};
    }
    case ControlKind::Int: {
        auto *i = static_cast<const SparkIntStruct *>(structure_);
        return ValueRange{static_cast<double>(i->Min), static_cast<double>(i->Max)};
    }
    case ControlKind::Boolean: return ValueRange{0.0, 1.0};
    case ControlKind::Pup:
        return ValueRange{0.0, static_cast<double>(pup_count(static_cast<const SparkPupStruct *>(structure_)) - 1)};
    case ControlKind::Color: return ValueRange{0.0, 4294967295.0};
    case ControlKind::Push:
    case ControlKind::String: break;
    }
    return std::nullopt;
}

std::string Control::check_value(double value) const {
    if (kind_ == ControlKind::Push) return label() + " is a push button and has no value";
    if (kind_ == ControlKind::String) return label() + " holds text, not a number";
    if (!std::isfinite(value)) return label() + ": the value must be a finite number";
    bool single = kind_ == ControlKind::Float;
    if (kind_ != ControlKind::Float && !whole(value))
        return label() + ": " + format_number(value) + " is not a whole number";
    if (kind_ == ControlKind::Boolean && value != 0.0 && value != 1.0)
        return label() + ": " + format_number(value) + " is neither 0 (off) nor 1 (on)";
    ValueRange r = *range();
    bool inside = value >= r.min && value <= r.max;
    if (single) {
        // Judged on the float actually stored, so that the text of a bound
        // (0.05) is accepted although it lies a hair below the float 0.05f.
        inside = std::fabs(value) <= FLT_MAX && static_cast<float>(value) >= static_cast<float>(r.min) &&
                 static_cast<float>(value) <= static_cast<float>(r.max);
    }
    if (!inside) {
        if (kind_ == ControlKind::Pup && r.max < 0) return label() + " is a list without entries";
        return label() + ": " + format_number(value, single) + " is out of range " + format_number(r.min, single) +
               " to " + format_number(r.max, single);
    }
    return {};
}

void Control::set_value(double value) {
    std::string problem = check_value(value);
    if (!problem.empty()) throw ControlError(problem);
    assign_clamped(value);
}

void Control::assign_clamped(double value) {
    if (std::isnan(value) || !has_value()) return;
    std::optional<ValueRange> r = range();
    auto clamped = [&](double v) { return r->min <= r->max ? std::clamp(v, r->min, r->max) : v; };
    switch (kind_) {
    case ControlKind::Float: {
        auto *f = static_cast<SparkFloatStruct *>(structure_);
        double v = std::clamp(clamped(value), -static_cast<double>(FLT_MAX), static_cast<double>(FLT_MAX));
        f->Value = static_cast<float>(v);
        break;
    }
    case ControlKind::Int:
        static_cast<SparkIntStruct *>(structure_)->Value =
            static_cast<int32_t>(std::clamp(clamped(std::trunc(value)), -2147483648.0, 2147483647.0));
        break;
    case ControlKind::Boolean: static_cast<SparkBooleanStruct *>(structure_)->Value = value != 0.0 ? 1 : 0; break;
    case ControlKind::Pup:
        if (r->max >= 0) static_cast<SparkPupStruct *>(structure_)->Value = static_cast<int32_t>(clamped(std::trunc(value)));
        break;
    case ControlKind::Color:
        static_cast<SparkColorStruct *>(structure_)->Value = static_cast<uint32_t>(clamped(std::trunc(value)));
        break;
    case ControlKind::Push:
    case ControlKind::String: break;
    }
}

std::string Control::text() const {
    if (kind_ != ControlKind::String) return {};
    return string_value(static_cast<const SparkStringStruct *>(structure_));
}

std::string Control::check_text(std::string_view text) const {
    if (kind_ != ControlKind::String) return label() + " does not hold text";
    if (text.size() >= SPARK_STRING_LENGTH)
        return label() + ": text of " + std::to_string(text.size()) + " characters is too long (at most " +
               std::to_string(SPARK_STRING_LENGTH - 1) + ")";
    if (text.find('\0') != std::string_view::npos) return label() + ": text contains a NUL character";
    return {};
}

void Control::set_text(std::string_view text) {
    std::string problem = check_text(text);
    if (!problem.empty()) throw ControlError(problem);
    auto *s = static_cast<SparkStringStruct *>(structure_);
    std::memset(s->Value, 0, sizeof s->Value);
    std::memcpy(s->Value, text.data(), text.size());
}

SparkCallback Control::callback() const {
    switch (kind_) {
    case ControlKind::Float: return static_cast<const SparkFloatStruct *>(structure_)->Callback;
    case ControlKind::Int: return static_cast<const SparkIntStruct *>(structure_)->Callback;
    case ControlKind::Boolean: return static_cast<const SparkBooleanStruct *>(structure_)->Callback;
    case ControlKind::Push: return static_cast<const SparkPushStruct *>(structure_)->Callback;
    case ControlKind::Pup: return static_cast<const SparkPupStruct *>(structure_)->Callback;
    case ControlKind::Color: return static_cast<const SparkColorStruct *>(structure_)->Callback;
    case ControlKind::String: return static_cast<const SparkStringStruct *>(structure_)->Callback;
    }
    return nullptr;
}

unsigned long *Control::notify(const SparkInfoStruct &info, int reason) const {
    SparkCallback cb = callback();
    return cb ? cb(reason, info) : nullptr;
}

unsigned long *Control::set_by_user(double value, const SparkInfoStruct &info) {
    set_value(value);
    return notify(info, SPARK_REASON_USER);
}

unsigned long *Control::set_text_by_user(std::string_view text, const SparkInfoStruct &info) {
    set_text(text);
    return notify(info, SPARK_REASON_USER);
}

// ---------------------------------------------------------------------------
// ControlTable

ControlTable ControlTable::discover(const SymbolLookup &lookup) {
    ControlTable table;
    for (int number = 0; number <= SPARK_MAX_CONTROL; ++number) {
        for (ControlKind kind : kAllKinds) {
            std::string symbol = std::string("Spark") + kind_name(kind) + std::to_string(number);
            void *address = lookup(symbol.c_str());
            if (!address) continue;
            if (!table.controls_.empty() && table.controls_.back().number() == number)
                throw ControlError("control " + std::to_string(number) + " is exported twice, as " +
                                   table.controls_.back().symbol() + " and " + symbol);
            table.controls_.emplace_back(kind, number, address);
        }
    }
    // A colour picker has no title of its own; the plug-in puts its R, G and
    // B sliders right after it ("BubbleColour R: %.2f").
    for (Control &control : table.controls_) {
        if (control.kind() != ControlKind::Color) continue;
        Control *red = table.find(control.number() + 1);
        if (!red || red->kind() != ControlKind::Float) continue;
        const std::string &slider = red->name();
        if (slider.size() > 1 && slider.back() == 'R') {
            std::string stem = trim(slider.substr(0, slider.size() - 1));
            if (!stem.empty()) control.name_ = stem;
        }
    }
    return table;
}

ControlTable ControlTable::discover(void *dlopen_handle) {
    if (!dlopen_handle) throw ControlError("cannot list controls: no plug-in is loaded (null handle)");
    return discover([dlopen_handle](const char *name) { return dlsym(dlopen_handle, name); });
}

Control *ControlTable::find(int number) {
    auto found = std::lower_bound(controls_.begin(), controls_.end(), number,
                                  [](const Control &c, int n) { return c.number() < n; });
    return found != controls_.end() && found->number() == number ? &*found : nullptr;
}

std::vector<Control *> ControlTable::find_all(std::string_view name) {
    std::string wanted = lower(trim(name));
    std::vector<Control *> matches;
    for (Control &control : controls_) {
        if (lower(control.name()) == wanted || lower(control.title()) == wanted || lower(control.symbol()) == wanted)
            matches.push_back(&control);
    }
    return matches;
}

Control *ControlTable::find(std::string_view name) {
    std::vector<Control *> matches = find_all(name);
    return matches.empty() ? nullptr : matches.front();
}

Control &ControlTable::at(int number) {
    Control *control = find(number);
    if (!control) {
        if (number < 0 || number > SPARK_MAX_CONTROL)
            throw ControlError("control " + std::to_string(number) + " does not exist: numbers run from 0 to " +
                               std::to_string(SPARK_MAX_CONTROL));
        throw ControlError("the plug-in has no control " + std::to_string(number));
    }
    return *control;
}

Control &ControlTable::at(std::string_view name) {
    Control *control = find(name);
    if (control) return *control;
    std::string message = "no control named \"" + trim(name) + "\"";
    std::string nearest = closest_name(name);
    if (!nearest.empty()) message += "; did you mean \"" + nearest + "\"?";
    throw ControlError(message);
}

std::string ControlTable::closest_name(std::string_view name) const {
    std::vector<std::string> names;
    for (const Control &control : controls_) names.push_back(control.name());
    return closest_text(names, name);
}

// ---------------------------------------------------------------------------
// Registry

ControlTable &register_plugin_controls(void *dlopen_handle) {
    return register_plugin_controls(ControlTable::discover(dlopen_handle));
}

ControlTable &register_plugin_controls(ControlTable table) {
    registry() = std::make_unique<ControlTable>(std::move(table));
    return *registry();
}

void unregister_plugin_controls() { registry().reset(); }

ControlTable *registered_controls() { return registry().get(); }

}  // namespace sparkhost
