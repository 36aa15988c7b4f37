// The gl* entry points of our host: they record primitives instead of drawing.
#include "sparkhost/viewer/gl_recorder.h"

namespace sparkhost {

GlRecorder::GlRecorder() { clear(); }

void GlRecorder::LoadIdentity() {
    std::lock_guard<std::mutex> lock(mutex_);
    m_[0] = 1.0f; m_[1] = 0.0f; m_[2] = 0.0f;
    m_[3] = 1.0f; m_[4] = 0.0f; m_[5] = 0.0f;
}

// Post-multiplies as OpenGL does: the newest operation applies to vertices first.
void GlRecorder::Translate(float x, float y) {
    std::lock_guard<std::mutex> lock(mutex_);
    m_[4] += m_[0] * x + m_[2] * y;
    m_[5] += m_[1] * x + m_[3] * y;
}

void GlRecorder::Scale(float x, float y) {
    std::lock_guard<std::mutex> lock(mutex_);
    m_[0] *= x; m_[1] *= x;
    m_[2] *= y; m_[3] *= y;
}

void GlRecorder::Begin(GLenum mode) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (open_) ++misuses_;
    open_ = true;
    current_ = GlPrimitive();
    current_.mode = mode;
    current_.colour = colour_;
}

void GlRecorder::End() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!open_) {
        ++misuses_;
        return;
    }
    open_ = false;
    primitives_.push_back(std::move(current_));
    current_ = GlPrimitive();
}

void GlRecorder::Vertex(float x, float y) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!open_) {
        ++misuses_;
        return;
    }
    if (current_.vertices.empty()) current_.colour = colour_;
    current_.vertices.push_back({m_[0] * x + m_[2] * y + m_[4], m_[1] * x + m_[3] * y + m_[5]});
}

void GlRecorder::Colour(float r, float g, float b) {
    std::lock_guard<std::mutex> lock(mutex_);
    colour_ = {r, g, b};
}

void GlRecorder::Flush() {
    std::lock_guard<std::mutex> lock(mutex_);
    ++flushes_;
}

std::vector<GlPrimitive> GlRecorder::primitives() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return primitives_;
}

int GlRecorder::flushes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return flushes_;
}

int GlRecorder::misuses() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return misuses_;
}

void GlRecorder::clear() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        colour_ = GlColour();
        open_ = false;
        current_ = GlPrimitive();
        primitives_.clear();
        flushes_ = 0;
        misuses_ = 0;
    }
    LoadIdentity();
}

GlRecorder &gl_recorder() {
    static GlRecorder recorder;
    return recorder;
}

}  // namespace sparkhost

using sparkhost::gl_recorder;

extern "C" {
void glLoadIdentity(void) { gl_recorder().LoadIdentity(); }
// z is ignored: overlays are flat.
void glTranslatef(GLfloat x, GLfloat y, GLfloat) { gl_recorder().Translate(x, y); }
void glScalef(GLfloat x, GLfloat y, GLfloat) { gl_recorder().Scale(x, y); }
void glBegin(GLenum mode) { gl_recorder().Begin(mode); }
void glEnd(void) { gl_recorder().End(); }
void glVertex2f(GLfloat x, GLfloat y) { gl_recorder().Vertex(x, y); }
void glColor3f(GLfloat r, GLfloat g, GLfloat b) { gl_recorder().Colour(r, g, b); }
void glFlush(void) { gl_recorder().Flush(); }
}
