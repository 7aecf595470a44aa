#pragma once

#include <string>

/// Loads the entry points of the current context. Throws std::runtime_error when OpenGL is older
/// than 3.0.
void LoadOpenGl();

/// A program made of one of the SDK's pairs of GLSL sources, or of another pair in the same
/// language. It belongs to the OpenGL context that is current at its construction. It may be used
/// and destroyed only while that context is current.
class GlProgram
{
public:
    /// The first line of a source for a desktop. The first versions of the desktop language do not
    /// know `precision`, so this line requests a later one.
    static constexpr const char* FIRST_LINE = "#version 130\n";

    /// Throws std::runtime_error with the compiler's message when it refuses a source.
    GlProgram(const std::string& vertex, const std::string& fragment,
              const char* firstLine = FIRST_LINE);
    ~GlProgram();
    GlProgram(const GlProgram&) = delete;
    GlProgram& operator=(const GlProgram&) = delete;

    void Use() const;

    /// Sets a matrix of sixteen floats, row by row. The program must be in use.
    void SetMatrix(const char* uniform, const float& matrix) const;

    /// Gives an attribute its array: `components` floats for each vertex, with `stride` bytes from
    /// one vertex to the next. It applies while the `Array` exists.
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
