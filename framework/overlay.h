// OverlayQv: the drawing state of the viewer overlay and the primitives an
// effect draws its guides and handles with, on the host's OpenGL context.
#pragma once

#include <cstdint>

// The kind of a pointer event in the viewer.
enum InterType : int {
    InterMove = 0,     // pointer moved, no button
    InterPress = 1,    // button pressed
    InterDrag = 2,     // pointer dragged with the button held
    InterRelease = 3,  // button released
};

class CrosshairOverlayQv;
class LineOverlayQv;
class AngleOverlayQv;
class CircleOverlayQv;
class RectangleOverlayQv;

// Coordinates are image units: the host's transform maps them to the
// viewer, scaled by the zoom. Sizes meant to look the same at any zoom
// (handles, arms, text) are divided by the zoom.
class OverlayQv {
public:
    OverlayQv() = default;
    virtual ~OverlayQv() = default;
    virtual void RenderOverlay() {}
    virtual void HandleInteraction(InterType, float, float) {}

    // Sets what the primitives and widgets measure with. The pixel aspect is
    // kept as the ratio aspect / 1. Refuses (with a message) a size or zoom
    // that is not positive, keeping the previous viewport.
    void SetViewport(int width, int height, float aspect, float zoom, float scale);
    // The ratio of the two aspect fields.
    float PixelAspect() const { return aspect_y != 0.0f ? aspect_x / aspect_y : 1.0f; }
    // Width, height and zoom are all positive: widgets act only then.
    bool ready() const { return viewer_width > 0 && viewer_height > 0 && zoom > 0.0f; }

    void BeginRender() {}
    void EndRender() {}

    // Components on 0..65535; alpha is not used.
    void SetColour(int red, int green, int blue, int alpha);
    void SetColour(const int32_t colour[4]) { SetColour(colour[0], colour[1], colour[2], colour[3]); }
    void DrawPixel(float x, float y);
    void DrawLine(float x0, float y0, float x1, float y1);
    // Half the side of a handle, in image units; also the grab distance.
    float GrabHandleSize() const;
    // The pointer is strictly inside the grab square of a handle at (hx, hy).
    bool OverHandle(float hx, float hy, float mx, float my) const;
    // A filled square of 10 viewer pixels centred on (x, y); the flag is not used.
    void DrawHandle(float x, float y, bool highlighted);
    // An outlined square of the same size: a handle that can be grabbed.
    void DrawHandleOutline(float x, float y);
    // Dashes and gaps of dash image units, starting with a gap.
    void DrawLineDotted(float x0, float y0, float x1, float y1, int dash);
    // An ellipse or elliptic arc (degrees) as line segments about n image
    // units long; dotted draws every other segment.
    void DrawEllipse(float cx, float cy, float width, float height, float rotation, int dotted,
                     int n, float start, float end);
    // Four arms reaching 25 viewer pixels from the centre, leaving the grab
    // square free; style non-zero adds a diamond at half the arm length.
    void DrawCrosshair(float x, float y, int style);
    // The outline of the axis-aligned rectangle with corners (x0, y0), (x1, y1).
    void DrawRectangle(float x0, float y0, float x1, float y1);
    // A line with a 10-pixel head at (x1, y1).
    void DrawArrow(float x0, float y0, float x1, float y1);
    // Stroked capitals, digits and common punctuation (lower case is drawn as
    // capitals, anything else as "?"), 12 viewer pixels tall, with (x, y)
    // the bottom left of the first character; "\n" starts a line below.
    void DrawText(float x, float y, const char *text);

    // Draw a widget in its colour and remember where its handles went.
    // They draw whether or not the widget is shown: that is the caller's choice.
    void DrawCrosshairOverlay(CrosshairOverlayQv *widget);
    void DrawLineOverlay(LineOverlayQv *widget);
    void DrawAngleOverlay(AngleOverlayQv *widget);
    void DrawCircleOverlay(CircleOverlayQv *widget);
    void DrawRectangleOverlay(RectangleOverlayQv *widget);

    int32_t viewer_width = 0;   // image width in pixels; divides a pointer x into a fraction
    int32_t viewer_height = 0;  // image height, for y
    float zoom = 1.0f;          // viewer pixels per image pixel
    float aspect_x = 1.0f;      // pixel aspect = aspect_x / aspect_y
    float aspect_y = 1.0f;
    float overlay_scale = 1.0f; // the scale the effect divides image-relative sizes by
};
