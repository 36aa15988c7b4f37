// The overlay widgets: on-screen handles tied to host position (and angle
// or size) entries, turning pointer events into new control values.
#pragma once

#include <cstdint>

#include "framework/overlay.h"
#include "spark/spark.h"

// Root of the widgets (not a ControlQv). Holds the host entry a widget
// drives and the record of that entry (for a position, its X), and what the
// effect decides about drawing: the colour and whether the widget is shown.
class OverlayControlQv {
public:
    virtual ~OverlayControlQv() = default;
    virtual void HandleInteraction(InterType, float, float) {}
    // Called by HandleInteraction after the framework's own handling, so a
    // derived widget can react; the widgets here write the host values.
    virtual void HandleInteractionPlat(InterType, float, float) {}

    int32_t index = 0;
    SparkFloatStruct *record = nullptr;
    int32_t colour[4] = {65535, 65535, 65535, 65535};  // 0..65535, for OverlayQv::SetColour
    int32_t shown = 1;
};

// One point, dragged by its centre. Positions are fractions of the image;
// the host records hold percent.
class CrosshairOverlayQv : public OverlayControlQv {
public:
    void Bind(OverlayQv *drawing, int x_index, SparkFloatStruct *x_record,
              SparkFloatStruct *y_record);
    void SetPosition(float x, float y);
    void HandleInteraction(InterType type, float mx, float my) override;
    void HandleInteractionPlat(InterType type, float mx, float my) override;

    SparkFloatStruct *y_record = nullptr;  // entry index+1
    int32_t grabbed = 0;
    int32_t highlighted = 0;
    OverlayQv *overlay = nullptr;
    float x = 0.0f, y = 0.0f;
    float screen_x = 0.0f, screen_y = 0.0f;  // where the centre was last drawn
    int32_t style = 0;                       // non-zero adds the inner diamond
};

// What the line and rectangle widgets share: two points, each a position
// pair (x on entry index or index2, y on the entry after it).
class PointPairOverlayQv : public OverlayControlQv {
public:
    void Bind(OverlayQv *drawing, int x_index, SparkFloatStruct *x_record,
              SparkFloatStruct *y_record, int x2_index, SparkFloatStruct *x2_record,
              SparkFloatStruct *y2_record);
    void SetPoints(float x, float y, float x2, float y2);

    SparkFloatStruct *y_record = nullptr;
    int32_t index2 = 0;
    SparkFloatStruct *x2_record = nullptr;
    SparkFloatStruct *y2_record = nullptr;
    int32_t grabbed = 0;                       // 0 none, else the handle
    int32_t highlighted = 0;
    OverlayQv *overlay = nullptr;
    float x = 0.0f, y = 0.0f, x2 = 0.0f, y2 = 0.0f;
    float screen_x = 0.0f, screen_y = 0.0f;    // the (first) handle, as last drawn
};

// A segment between two points, dragged as a whole by its middle.
class LineOverlayQv : public PointPairOverlayQv {
public:
    void HandleInteraction(InterType type, float mx, float my) override;
    void HandleInteractionPlat(InterType type, float mx, float my) override;
};

// A direction around a centre: a spoke whose tip is the handle. The record
// is an angle entry in degrees, counter-clockwise from the x axis; the
// centre is set by the effect (typically from a crosshair).
class AngleOverlayQv : public OverlayControlQv {
public:
    void Bind(OverlayQv *drawing, int angle_index, SparkFloatStruct *angle_record);
    void SetCentre(float x, float y);
    void SetAngle(float degrees) { angle = degrees; }
    void HandleInteraction(InterType type, float mx, float my) override;
    void HandleInteractionPlat(InterType type, float mx, float my) override;

    int32_t grabbed = 0;
    int32_t highlighted = 0;
    OverlayQv *overlay = nullptr;
    float centre_x = 0.0f, centre_y = 0.0f;  // fractions of the image
    float angle = 0.0f;                      // degrees, 0..360 once dragged
    float radius = 60.0f;                    // spoke length in viewer pixels
    float screen_x = 0.0f, screen_y = 0.0f;  // the tip, as last drawn
};

// A circle: the centre moves it (a position pair), a handle on its rim
// sizes it (a size entry: radius in percent of the image width).
// Handles: 1 the centre, 2 the rim.
class CircleOverlayQv : public OverlayControlQv {
public:
    void Bind(OverlayQv *drawing, int x_index, SparkFloatStruct *x_record,
              SparkFloatStruct *y_record, int radius_index, SparkFloatStruct *radius_record);
    void SetCircle(float x, float y, float radius);
    void HandleInteraction(InterType type, float mx, float my) override;
    void HandleInteractionPlat(InterType type, float mx, float my) override;

    SparkFloatStruct *y_record = nullptr;
    int32_t index2 = 0;                        // the radius entry
    SparkFloatStruct *radius_record = nullptr;
    int32_t grabbed = 0;                       // 0 none, else the handle
    int32_t highlighted = 0;
    OverlayQv *overlay = nullptr;
    float x = 0.0f, y = 0.0f, radius = 0.0f;   // fractions of the image (radius: of its width)
    float screen_x = 0.0f, screen_y = 0.0f;    // the centre, as last drawn
    float rim_x = 0.0f, rim_y = 0.0f;          // the rim handle, as last drawn
};

// An axis-aligned rectangle given by two opposite corners, each a position
// pair. Handles: 1 the first corner, 2 the second.
class RectangleOverlayQv : public PointPairOverlayQv {
public:
    void SetCorners(float x, float y, float x2, float y2) { SetPoints(x, y, x2, y2); }
    void HandleInteraction(InterType type, float mx, float my) override;
    void HandleInteractionPlat(InterType type, float mx, float my) override;

    float screen_x2 = 0.0f, screen_y2 = 0.0f;  // second corner, as last drawn
};
