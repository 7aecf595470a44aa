// A program in OpenGL's shading language, version 330. It belongs to the thread of its context.
#pragma once

#include "Graphics/GlFunctions.h"

namespace qltxr
{

class GlProgram
{
public:
    /// The attributes get the numbers 0, 1, ... in their order. `define` becomes a line of the
    /// fragment shader. Throws std::runtime_error with the compiler's message when the compiler
    /// refuses a shader.
    GlProgram(const GlFunctions& gl, const char* vertex, const char* fragment, const char* define,
              const char* const* attributes, GLuint attributeCount);
    ~GlProgram() { mGl.DeleteProgram(mProgram); }
    GlProgram(const GlProgram&) = delete;
    GlProgram& operator=(const GlProgram&) = delete;

    void Use() const { mGl.UseProgram(mProgram); }
    GLint Uniform(const char* name) const { return mGl.GetUniformLocation(mProgram, name); }

private:
    void Attach(GLenum stage, const char* define, const char* text) const;

    const GlFunctions& mGl;
    const GLuint mProgram;
};

} // namespace qltxr
