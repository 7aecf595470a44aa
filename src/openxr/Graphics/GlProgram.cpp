#include "Graphics/GlProgram.h"

#include <stdexcept>
#include <string>

namespace qltxr
{

GlProgram::GlProgram(const GlFunctions& gl, const char* vertex, const char* fragment,
                     const char* define, const char* const* attributes, GLuint attributeCount)
    : mGl(gl)
    , mProgram(gl.CreateProgram())
{
    Attach(GL_VERTEX_SHADER, "", vertex);
    Attach(GL_FRAGMENT_SHADER, define, fragment);
    for (GLuint i = 0; i < attributeCount; ++i)
    {
        gl.BindAttribLocation(mProgram, i, attributes[i]);
    }
    gl.LinkProgram(mProgram);
    GLint linked = GL_FALSE;
    gl.GetProgramiv(mProgram, GL_LINK_STATUS, &linked);
    if (linked == GL_FALSE)
    {
        gl.DeleteProgram(mProgram);
        throw std::runtime_error("a shader of the compositor does not link");
    }
}

void GlProgram::Attach(GLenum stage, const char* define, const char* text) const
{
    const GLuint shader = mGl.CreateShader(stage);
    const char* const texts[] = {"#version 330\n", define, text};
    mGl.ShaderSource(shader, 3, texts, nullptr);
    mGl.CompileShader(shader);
    mGl.AttachShader(mProgram, shader);
    mGl.DeleteShader(shader); // OpenGL deletes the shader together with the program
    GLint compiled = GL_FALSE;
    mGl.GetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    if (compiled == GL_FALSE)
    {
        char log[1024] = {};
        mGl.GetShaderInfoLog(shader, sizeof(log), nullptr, log);
        mGl.DeleteProgram(mProgram);
        throw std::runtime_error(std::string("a shader of the compositor does not compile: ") +
                                 log);
    }
}

} // namespace qltxr
