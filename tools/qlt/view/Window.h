#pragma once

#include <functional>
#include <memory>
#include <string>

struct GLFWwindow;

/// The only window of the program, with an OpenGL context that is current on the thread that
/// created it.
class Window
{
public:
    using KeyHandler = std::function<void(char)>;

    /// `onKey` gets the letter of each pressed key, and ' ' for the space bar. Escape closes the
    /// window. Throws std::runtime_error when there is no display or no OpenGL.
    Window(int width, int height, KeyHandler onKey);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void SetTitle(const std::string& title);

    /// Makes the window the target of all drawing. Gives its size in pixels, which is 0 while it is
    /// minimised.
    void Use(int& width, int& height);

    /// Shows the drawn picture at the pace of the display and handles the user's input. Returns
    /// false when the window should close.
    bool Show();

private:
    struct Library // destroyed after the window
    {
        Library();
        ~Library();
    };
    struct Closer
    {
        void operator()(GLFWwindow* window) const;
    };

    KeyHandler mOnKey;
    Library mLibrary;
    std::unique_ptr<GLFWwindow, Closer> mWindow;
};
