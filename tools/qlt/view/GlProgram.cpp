#include "view/GlProgram.h"

#include <stdexcept>

#include <GL/glew.h>

namespace
{

constexpr GLsizei LOG_SIZE = 1024;

void Attach(GLuint program, GLenum stage, const char* firstLine, const std::string& text)
{
    const GLuint shader = glCreateShader(stage);
    const char* const texts[] = {firstLine, text.c_str()};
    glShaderSource(shader, 2, texts, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glDeleteShader(shader); // OpenGL deletes the shader when it deletes the program
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_FALSE)
    {
        char log[LOG_SIZE] = {};
        glGetShaderInfoLog(shader, LOG_SIZE, nullptr, log);
        glDeleteProgram(program);
        throw std::runtime_error(std::string("a shader does not compile: ") + log);
    }
}

} // namespace

void LoadOpenGl()
{
    glewInit(); // without a GLX display the call fails, but it loads every entry point
    if (GLEW_VERSION_3_0 == GL_FALSE)
    {
        throw std::runtime_error("there is no OpenGL 3.0 here");
    }
}

GlProgram::GlProgram(const std::string& vertex, const std::string& fragment, const char* firstLine)
    : mProgram(glCreateProgram())
{
    Attach(mProgram, GL_VERTEX_SHADER, firstLine, vertex);
    Attach(mProgram, GL_FRAGMENT_SHADER, firstLine, fragment);
    glLinkProgram(mProgram);
    GLint linked = GL_FALSE;
    glGetProgramiv(mProgram, GL_LINK_STATUS, &linked);
    if (linked == GL_FALSE)
    {
        char log[LOG_SIZE] = {};
        glGetProgramInfoLog(mProgram, LOG_SIZE, nullptr, log);
        glDeleteProgram(mProgram);
        throw std::runtime_error(std::string("a shader does not link: ") + log);
    }
}

GlProgram::~GlProgram() { glDeleteProgram(mProgram); }

void GlProgram::Use() const { glUseProgram(mProgram); }

void GlProgram::SetMatrix(const char* uniform, const float& matrix) const
{
    glUniformMatrix4fv(glGetUniformLocation(mProgram, uniform), 1, GL_TRUE, &matrix);
}

GlProgram::Array::Array(const GlProgram& program, const char* attribute, int components,
                        const void* first, int stride)
    : mIndex(static_cast<GLuint>(glGetAttribLocation(program.mProgram, attribute)))
{
    glEnableVertexAttribArray(mIndex);
    glVertexAttribPointer(mIndex, components, GL_FLOAT, GL_FALSE, stride, first);
}

GlProgram::Array::~Array() { glDisableVertexAttribArray(mIndex); }
