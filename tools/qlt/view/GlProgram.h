// A program of one of the SDK's pairs of GLSL sources, or of a pair in the same language. It
// belongs to the OpenGL context that is current when it is made, and is used and destroyed under
// it.
#pragma once

#include <string>

/// Loads the entry points of the current context; std::runtime_error when it is older than 3.0.
void LoadOpenGl();

class GlProgram
{
public:
    /// For a desktop, whose first versions of the language do not know `precision`.
    static constexpr const char* FIRST_LINE = "#version 130\n";

    /// std::runtime_error with the compiler's words when it refuses.
    GlProgram(const std::string& vertex, const std::string& fragment,
              const char* firstLine = FIRST_LINE);
    ~GlProgram();
    GlProgram(const GlProgram&) = delete;
    GlProgram& operator=(const GlProgram&) = delete;

    void Use() const;

    /// Of this program, in use: a matrix of sixteen floats, row by row.
    void SetMatrix(const char* uniform, const float& matrix) const;

    /// Where an attribute has its array: `components` floats for each vertex, `stride` bytes from
    /// one to the next. Until the end of the `Array`.
    class Array
    {
    public:
        Array(const GlProgram& program, const char* attribute, int components, const void* first,
              int stride = 0);
        ~Array();
        Array(const Array&) = delete;
        Array& operator=(const Array&) = delete;

    private:
        unsigned int mIndex;
    };

private:
    unsigned int mProgram;
};
