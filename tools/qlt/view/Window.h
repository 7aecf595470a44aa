// A window with an OpenGL context, current on the thread that made it; the only one of the program.
#pragma once

#include <functional>
#include <memory>
#include <string>

struct GLFWwindow;

class Window
{
public:
    using KeyHandler = std::function<void(char)>;

    /// `onKey` gets the letter of each key that is pressed, ' ' for the space bar; Escape closes
    /// the window. std::runtime_error when there is no display or no OpenGL for it.
    Window(int width, int height, KeyHandler onKey);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void SetTitle(const std::string& title);

    /// Makes the window's own picture what is drawn to; its size in pixels, 0 while it is
    /// minimised.
    void Use(int& width, int& height);

    /// Shows what was drawn at the display's pace, and handles what the user has done; false when
    /// the window is to be closed.
    bool Show();

private:
    struct Library // ends after the window
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
