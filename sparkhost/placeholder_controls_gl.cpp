// Placeholder host functions: the simplest behaviour that lets a plug-in
// link and run. Replaced piece by piece by the real host.
#include <cstdint>
#include <map>
#include <utility>

#include "spark/spark.h"
#include "spark/spark_gl.h"

extern "C" {
void sparkControlUpdate(int) {}
void sparkEnableParameter(int, int) {}
void sparkDisableParameter(int, int) {}
void glLoadIdentity(void) {}
void glTranslatef(GLfloat, GLfloat, GLfloat) {}
void glScalef(GLfloat, GLfloat, GLfloat) {}
void glBegin(GLenum) {}
void glEnd(void) {}
void glVertex2f(GLfloat, GLfloat) {}
void glColor3f(GLfloat, GLfloat, GLfloat) {}
void glFlush(void) {}
}
