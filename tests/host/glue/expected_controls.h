// The product's control table, written out independently of the plug-in's
// own source of it: numbers, titles, defaults, ranges and steps.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace expected_controls {

struct Number { int number; const char *title; double value, min, max, step; };
inline const Number kFloats[] = {
    {11, "Left X: %.2f", 1, -300, 300, 0.05}, {12, "Left Y: %.2f", 1, -300, 300, 0.05},
    {13, "Lifetime: %.2f", 200, 1, 1000, 1}, {16, "Density: %.2f", 20, 0, 10000, 1},
    {17, "Position Var: %.2f", 1, 0, 300, 0.05}, {18, "Right X: %.2f", 90, -300, 300, 0.05},
    {19, "Right Y: %.2f", 1, -300, 300, 0.05}, {20, "Initial Velocity: %.2f", 200, -2000, 2000, 1},
    {21, "Velocity Var: %.2f", 100, 0, 200, 0.5}, {22, "Vel Dir: %.2f", 90, 0, 360, 0.01},
    {24, "Bubble Size: %.2f", 20, 1, 40, 0.1}, {25, "Bubble Size Var: %.2f", 100, 0, 100, 0.5},
    {27, "Blend: %.2f", 0, 0, 100, 0.1}, {39, "SwirlDens: %.2f", 60, 0, 100, 0.1},
    {40, "SwirlAmp: %.2f", 1, 0, 100, 0.2}, {41, "SwlMaxTim: %.2f", 0, 0, 100, 1},
    {43, "Friction: %.3f", 0.05, 0, 1, 0.005}, {45, "Gravity: %.2f", 0.2, 0, 10, 0.05},
    {46, "GravAngle: %.2f", 90, 0, 360, 0.005}, {50, "Burst Probability: %.2f", 50, 0, 100, 0.5},
    {51, "Burst Quantity: %.2f", 80, 0, 100, 0.5}, {52, "Burst Extent: %.2f", 5, 0, 10, 0.1},
    {69, "ColourVar: %.2f", 0, 0, 100, 0.5}, {70, "MonoVar: %.2f", 0, 0, 100, 0.5},
    {72, "BubbleColour R: %.2f", 100, 0, 100, 0.2}, {73, "BubbleColour G: %.2f", 100, 0, 100, 0.2},
    {74, "BubbleColour B: %.2f", 100, 0, 100, 0.2}, {95, "Light Colour R: %.2f", 100, 0, 100, 0.2},
    {96, "Light Colour G: %.2f", 100, 0, 100, 0.2}, {97, "Light Colour B: %.2f", 100, 0, 100, 0.2},
    {99, "Ref Intensity: %.2f", 100, 0, 200, 0.5}, {100, "Light Source X: %.2f", 50, -300, 300, 0.05},
    {101, "Light Source Y: %.2f", 90, -300, 300, 0.05}, {102, "Light Inten: %.2f", 50, 0, 500, 0.5},
    {103, "Light Spread: %.2f", 90, 0, 180, 0.005}, {104, "Glisten Tight: %.2f", 30, 0, 1000, 1},
    {107, "Light Target X: %.2f", 50, -300, 300, 0.05}, {108, "Light Target Y: %.2f", 1, -300, 300, 0.05},
    {109, "Light Z: %.3f", 0, -1, 1, 0.05}, {111, "Min. Bright: %.2f", 60, 0, 100, 0.5},
    {112, "Shine: %.2f", 45, 1, 200, 0.1}, {113, "Highlight: %.2f", 10, 1, 200, 0.1},
};
inline const Number kIntegers[] = {
    {9, "PreRoll: %d", 20, 1, 1000, 1}, {14, "TimeMaxSize: %d", 25, 1, 500, 1},
    {26, "Seed: %d", 785, 1, 999999, 1}, {53, "Afterlife: %d", 3, 0, 100, 1},
};
struct Switch { int number; const char *title; int value; };
inline const Switch kSwitches[] = {
    {15, "Use Birth Matte   ", 0}, {28, "Clear Overlay", 0},  {34, "Auto Preview", 1},   {38, "Turbulence   ", 1},
    {42, "Friction   ", 1},        {44, "Gravity   ", 0},     {49, "Bubbles Burst   ", 0}, {54, "Congregate   ", 0},
    {57, "Clear Overlay", 0},      {63, "Auto Preview", 1},   {86, "Clear Overlay", 0},  {92, "Auto Preview", 1},
    {93, "Light   ", 0},           {98, "Reflections   ", 0}, {115, "Clear Overlay", 0}, {121, "Auto Preview", 1},
};
struct Button { int number; const char *title; };
inline const Button kButtons[] = {
    {6, "Restart   "}, {7, "Restart+PreRoll   "}, {8, "Do PreRoll   "}, {10, "Advance   "}, {31, "Help"}, {32, "Reset"},
    {35, "Restart   "}, {36, "Restart+PreRoll   "}, {37, "Do PreRoll   "}, {60, "Help"}, {61, "Reset"},
    {64, "Restart   "}, {65, "Restart+PreRoll   "}, {66, "Do PreRoll   "}, {89, "Help"}, {90, "Reset"},
    {114, "Import Amplitude File"}, {118, "Help"}, {119, "Reset"},
};
inline const std::vector<std::string> kResolutions = {"FULL", "1/2", "1/3", "1/4", "1/6", "1/8", "1/12", "1/16", "1/32"};
struct List { int number, value; std::vector<std::string> entries; };
inline const List kLists[] = {
    {23, 3, {"Growth Mode: Assorted  ", "Growth Mode: Shrinking  ", "Growth Mode: Variable Growth  ",
             "Growth Mode: Linear Growth  "}},
    {29, 0, {"Demos: Basic  ", "Demos: Soap  ", "Demos: Champagne  ", "Demos: Under Water  ", "Demos: Floating  ",
             "Demos: Bubbly  ", "Demos: Swirly  ", "Demos: Gathering  ", "Demos: Flurry  ", "Demos: Pipe  "}},
    {75, 2, {"Fade Mode: Col+Dens  ", "Fade Mode: Colour  ", "Fade Mode: Density  "}},
    {33, 0, kResolutions}, {62, 0, kResolutions}, {91, 0, kResolutions}, {120, 0, kResolutions},
};
inline const int kColours[] = {71, 94};
inline const std::map<int, std::string> kStrings = {
    {0, "1: Background"}, {1, "2: Birth"}, {2, "3: Burst/Gather"}, {3, "4: Reflection"}};

}  // namespace expected_controls
