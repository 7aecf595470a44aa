// The OpenGL functions that the runtime calls. The runtime keeps pointers to them in its own object
// and does not link to their names. Some programs export variables with the names of OpenGL's
// functions, and a call through such a name would jump into their data.
#pragma once

#define GL_GLEXT_PROTOTYPES // only the types are needed
#include <GL/glcorearb.h>

namespace qltxr
{

// The formatter would indent each line of the list more than the one before.
// clang-format off
#define QLT_GL_FUNCTIONS(_) \
    _(ActiveTexture) _(AttachShader) _(BindAttribLocation) _(BindBuffer) _(BindFramebuffer) \
    _(BindSampler) _(BindTexture) _(BindVertexArray) _(BlendFunc) _(BlitFramebuffer) \
    _(BufferData) _(CheckFramebufferStatus) _(Clear) _(ClearColor) _(ClientWaitSync) \
    _(CompileShader) _(CreateProgram) _(CreateShader) _(DeleteBuffers) _(DeleteFramebuffers) \
    _(DeleteProgram) _(DeleteSamplers) _(DeleteShader) _(DeleteSync) _(DeleteTextures) \
    _(DeleteVertexArrays) _(Disable) _(DrawElements) _(Enable) _(EnableVertexAttribArray) \
    _(FenceSync) _(Finish) _(Flush) _(FramebufferTexture2D) _(GenBuffers) _(GenFramebuffers) \
    _(GenSamplers) _(GenTextures) _(GenVertexArrays) _(GetError) _(GetIntegerv) _(GetProgramiv) \
    _(GetShaderInfoLog) _(GetShaderiv) _(GetUniformLocation) _(IsTexture) _(LinkProgram) \
    _(PixelStorei) _(ReadPixels) _(SamplerParameteri) _(ShaderSource) _(TexParameteri) \
    _(TexStorage2D) _(TexStorage3D) _(TexSubImage2D) _(TexSubImage3D) _(Uniform1f) _(Uniform1i) \
    _(Uniform2f) _(Uniform4f) _(UniformMatrix3fv) _(UseProgram) _(VertexAttribPointer) \
    _(Viewport) _(WaitSync)
// clang-format on

struct GlFunctions
{
#define QLT_GL_POINTER(name) decltype(&::gl##name) name = nullptr;
    QLT_GL_FUNCTIONS(QLT_GL_POINTER)
#undef QLT_GL_POINTER

    /// Loads all functions. Returns false when one of them is missing.
    bool Load(void* (*loader)(const char* name))
    {
        bool complete = true;
#define QLT_GL_LOAD(name)                                                                          \
    name = reinterpret_cast<decltype(name)>(loader("gl" #name));                                   \
    complete = complete && name != nullptr;
        QLT_GL_FUNCTIONS(QLT_GL_LOAD)
#undef QLT_GL_LOAD
        return complete;
    }
};

} // namespace qltxr
