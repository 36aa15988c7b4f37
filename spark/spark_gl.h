/* The immediate-mode OpenGL subset that overlays draw with. Declared for the
 * plug-in but never linked into it: the loading process supplies them (a real
 * GL library in a legacy host, a recorder in ours). */
#ifndef SPARK_SPARK_GL_H
#define SPARK_SPARK_GL_H

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned int GLenum;
typedef float GLfloat;

#define GL_POINTS 0x0000
#define GL_LINES 0x0001
#define GL_LINE_STRIP 0x0003
#define GL_POLYGON 0x0009

void glLoadIdentity(void);
void glTranslatef(GLfloat x, GLfloat y, GLfloat z);
void glScalef(GLfloat x, GLfloat y, GLfloat z);
void glBegin(GLenum mode);
void glEnd(void);
void glVertex2f(GLfloat x, GLfloat y);
void glColor3f(GLfloat r, GLfloat g, GLfloat b);
void glFlush(void);

#ifdef __cplusplus
}
#endif

#endif /* SPARK_SPARK_GL_H */
