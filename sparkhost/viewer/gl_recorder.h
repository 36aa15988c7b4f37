// Our host's OpenGL: records what a plug-in's overlay draws so that it can be
// inspected, written as SVG or drawn over an RGB frame.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <mutex>
#include <string>
#include <vector>

#include "spark/spark_gl.h"

namespace sparkhost {

struct GlColour {
    float r = 1.0f, g = 1.0f, b = 1.0f;
};

struct GlVertex {
    float x = 0.0f, y = 0.0f;
};

// One glBegin..glEnd block. Vertices are in viewer coordinates (after the
// transform current when each was given), y upwards as in OpenGL.
struct GlPrimitive {
    GLenum mode = GL_POINTS;  // GL_POINTS, GL_LINES, GL_LINE_STRIP or GL_POLYGON
    GlColour colour;          // the colour current at the first vertex
    std::vector<GlVertex> vertices;
};

// Which buffer row holds the bottom of the picture.
enum class RowOrder { BottomFirst, TopFirst };

// The state behind the gl* entry points: a 2D affine transform made of
// translations and scales, the current colour, and the finished primitives.
class GlRecorder {
public:
    GlRecorder();

    void LoadIdentity();
    void Translate(float x, float y);
    void Scale(float x, float y);
    void Begin(GLenum mode);
    void End();
    void Vertex(float x, float y);
    void Colour(float r, float g, float b);
    void Flush();

    std::vector<GlPrimitive> primitives() const;
    int flushes() const;
    // Calls made out of order (a vertex outside glBegin/glEnd, a nested
    // glBegin, a glEnd without glBegin); each is otherwise ignored.
    int misuses() const;
    // Forgets everything drawn and resets the transform, colour and counters.
    void clear();

private:
    mutable std::mutex mutex_;
    // x' = m_[0] x + m_[2] y + m_[4], y' = m_[1] x + m_[3] y + m_[5]
    float m_[6];
    GlColour colour_;
    bool open_ = false;
    GlPrimitive current_;
    std::vector<GlPrimitive> primitives_;
    int flushes_ = 0;
    int misuses_ = 0;
};

// The recorder that the process's gl* functions draw into.
GlRecorder &gl_recorder();

// Writes primitives as an SVG picture of width x height viewer pixels (the
// viewer's y axis points up, SVG's down: rows are flipped). A background
// colour, when given, fills the picture first.
void WriteSvg(std::ostream &out, const std::vector<GlPrimitive> &primitives, int width,
              int height, const GlColour *background = nullptr);
// The same into a file; false (with a message on stderr) when it cannot be written.
bool WriteSvgFile(const std::string &path, const std::vector<GlPrimitive> &primitives,
                  int width, int height, const GlColour *background = nullptr);

// Draws primitives over an 8-bit interleaved RGB buffer of width x height
// pixels (rows packed, 3 bytes a pixel). Viewer pixel (x, y) covers
// [x, x+1) x [y, y+1); what falls outside the buffer is clipped.
void Rasterise(const std::vector<GlPrimitive> &primitives, uint8_t *rgb, int width, int height,
               RowOrder order);

}  // namespace sparkhost
