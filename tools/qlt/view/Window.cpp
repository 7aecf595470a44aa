#include "view/Window.h"

#include <stdexcept>
#include <utility>

#include <GL/glew.h>
#include <GLFW/glfw3.h>

namespace
{

void OnKey(GLFWwindow* window, int key, int /*scancode*/, int action, int /*modifiers*/)
{
    if (action != GLFW_PRESS)
    {
        return;
    }
    if (key == GLFW_KEY_ESCAPE)
    {
        glfwSetWindowShouldClose(window, GLFW_TRUE);
    }
    else if (key == GLFW_KEY_SPACE || (key >= GLFW_KEY_A && key <= GLFW_KEY_Z))
    {
        (*static_cast<Window::KeyHandler*>(glfwGetWindowUserPointer(window)))(
            static_cast<char>(key)); // the code of a key is its letter
    }
}

} // namespace

Window::Library::Library()
{
    if (glfwInit() == GLFW_FALSE)
    {
        throw std::runtime_error("there is no display to open a window on");
    }
}

Window::Library::~Library() { glfwTerminate(); }

void Window::Closer::operator()(GLFWwindow* window) const { glfwDestroyWindow(window); }

Window::Window(int width, int height, KeyHandler onKey)
    : mOnKey(std::move(onKey))
    , mWindow(glfwCreateWindow(width, height, "qlt view", nullptr, nullptr))
{
    if (mWindow == nullptr)
    {
        throw std::runtime_error("there is no OpenGL for a window here");
    }
    glfwSetWindowUserPointer(mWindow.get(), &mOnKey);
    glfwSetKeyCallback(mWindow.get(), OnKey);
    glfwMakeContextCurrent(mWindow.get());
    glfwSwapInterval(1);
}

Window::~Window() = default;

void Window::SetTitle(const std::string& title)
{
    glfwSetWindowTitle(mWindow.get(), title.c_str());
}

void Window::Use(int& width, int& height)
{
    glfwGetFramebufferSize(mWindow.get(), &width, &height);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

bool Window::Show()
{
    glfwSwapBuffers(mWindow.get());
    glfwPollEvents();
    return glfwWindowShouldClose(mWindow.get()) == GLFW_FALSE;
}
