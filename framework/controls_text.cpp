// Text and file-name controls on host string entries.
#include "framework/controls.h"

#include <cctype>
#include <cstring>

namespace {

// Copies at most one string's worth and always terminates; source and
// target may be the same buffer.
void copy_string(char *target, const char *source) {
    if (!source) source = "";
    if (target == source) return;
    size_t length = strnlen(source, SPARK_STRING_LENGTH - 1);
    std::memmove(target, source, length);
    target[length] = '\0';
}

void delete_white_space(char *text) {
    char *out = text;
    for (const char *in = text; *in; ++in)
        if (!std::isspace(static_cast<unsigned char>(*in))) *out++ = *in;
    *out = '\0';
}

}  // namespace

// ---- TextControlQv ----------------------------------------------------------

void TextControlQv::Sync() {
    if (bound() && cached != record()->Value) copy_string(cached, record()->Value);
}

void TextControlQv::GetValue(double, const char *&value) {
    if (bound()) cached = record()->Value;
    value = cached;
}

const char *TextControlQv::GetValue(double frame) {
    const char *value;
    GetValue(frame, value);
    return value;
}

void TextControlQv::SetValue(double, const char *value) {
    if (!bound()) return;
    copy_string(record()->Value, value);
    sparkControlUpdate(index);
    Sync();
}

// ---- FileControlQv ----------------------------------------------------------

void FileControlQv::Bound() { text = aux ? aux->text : nullptr; }

void FileControlQv::Sync() {
    if (text && cached != text->Value) copy_string(cached, text->Value);
}

// The host's own string is shortened too, on purpose: the name shown is the
// name used.
void FileControlQv::GetValue(double, char *&value) {
    if (text) {
        delete_white_space(text->Value);
        cached = text->Value;
    }
    value = cached;
}

char *FileControlQv::GetValue(double frame) {
    char *value;
    GetValue(frame, value);
    return value;
}

void FileControlQv::SetValue(double, const char *value) {
    if (!text) return;
    copy_string(text->Value, value);
    sparkControlUpdate(index + 7);
    Sync();
}

void FileControlQv::ShowDisabled(bool flag) { MarkDisabled(button()->Title, flag); }

void FileControlQv::HideMoreEntries(bool flag) const { ShowEntry(index + 7, flag); }
