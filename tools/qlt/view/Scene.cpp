#include "view/Scene.h"

#include <qlt/Render/Shaders.h>

#include <GL/glew.h>

namespace
{

constexpr const char* COLOR_SHADER_V = R"(uniform mat4 uMVPMatrix;
attribute vec3 aPosition;
attribute vec3 aColor;
varying vec3 vColor;

void main()
{
    vColor = aColor;
    gl_Position = uMVPMatrix * vec4(aPosition, 1.0);
}
)";

constexpr const char* COLOR_SHADER_F = R"(varying vec3 vColor;

void main()
{
    gl_FragColor = vec4(vColor, 1.0);
}
)";

/// The additional light of the light squares of the board.
constexpr float BOARD_LIGHT = 0.2f;

} // namespace

Scene::Scene()
    : mTriangles(MakeSceneModel())
    , mColors(COLOR_SHADER_V, COLOR_SHADER_F)
    , mBoard(qlt::Shaders::ObjectShaderV(), qlt::Shaders::ObjectShaderF())
{
}

void Scene::Draw(const qlt::Matrix& view) const
{
    const auto count = static_cast<GLsizei>(mTriangles.size());
    const SceneVertex& first = mTriangles.front();
    const int stride = sizeof(SceneVertex);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    mColors.Use();
    mColors.SetMatrix("uMVPMatrix", view.array());
    {
        const GlProgram::Array position(mColors, "aPosition", 3, &first.position, stride);
        const GlProgram::Array color(mColors, "aColor", 3, &first.color, stride);
        glDrawArrays(GL_TRIANGLES, 0, count);
    }
    // Draw the board on top as light. Its dark squares are transparent.
    glEnable(GL_BLEND);
    glBlendColor(0.0f, 0.0f, 0.0f, BOARD_LIGHT);
    glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(-1.0f, -1.0f);
    mBoard.Use();
    mBoard.SetMatrix("uMVPMatrix", view.array());
    const GlProgram::Array position(mBoard, "aPosition", 3, &first.position, stride);
    const GlProgram::Array board(mBoard, "aTexCoord", 2, &first.board, stride);
    glDrawArrays(GL_TRIANGLES, 0, count);
    glDisable(GL_POLYGON_OFFSET_FILL);
}
