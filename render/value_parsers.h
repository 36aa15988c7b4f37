// The values fizzle-render's options take, parsed from what the user typed.
// Each throws sparkhost::Error with a one-line message naming the option and
// never anything else, whatever the text (they are fuzzed).
#pragma once

#include <string>
#include <utility>
#include <vector>

// --frames FIRST-LAST or a single frame, numbered from 1.
struct FrameRange {
    int first = 1;
    int last = 1;
};
FrameRange parse_frames(const std::string &text);

// --size WIDTHxHEIGHT, 1 to 16384 pixels each way.
struct PixelSize {
    int width = 0;
    int height = 0;
};
PixelSize parse_size(const std::string &text);

// --set NAME=VALUE, split.
struct ControlAssignment {
    std::string option;  // as typed, for messages
    std::string name;    // title, name or number of the control
    std::string value;
};
ControlAssignment parse_assignment(const std::string &text);

// --animate NAME=FRAME:VALUE,..., split; frames count as --frames does.
struct ControlAnimation {
    std::string option;
    std::string name;
    std::vector<std::pair<double, std::string>> keys;
};
ControlAnimation parse_animation(const std::string &text);

// --proxy: the index of an entry of the resolution list.
int parse_proxy(const std::string &text);
