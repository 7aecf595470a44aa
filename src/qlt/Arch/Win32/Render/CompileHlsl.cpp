// A program of the build. It compiles the shaders of direct mode with the system's compiler and
// writes them as C++ source.
//
//     qlt_compile_hlsl DirectMode.hlsl DirectModeShaders.cpp
#include <cstddef>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <windows.h>

#include <d3dcompiler.h>
#include <wrl/client.h>

namespace
{

using Microsoft::WRL::ComPtr;

std::string ReadFile(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file || text.empty())
    {
        throw std::runtime_error(std::string("cannot read ") + path);
    }
    return text;
}

/// Compiles `entry` and returns the definition of a ShaderObject called `name`.
std::string Compile(const std::string& source, const char* path, const char* entry,
                    const char* target, const std::string& name)
{
    ComPtr<ID3DBlob> object;
    ComPtr<ID3DBlob> messages;
    const HRESULT result =
        D3DCompile(source.data(), source.size(), path, nullptr, nullptr, entry, target,
                   D3DCOMPILE_ENABLE_STRICTNESS | D3DCOMPILE_OPTIMIZATION_LEVEL3, 0,
                   object.GetAddressOf(), messages.GetAddressOf());
    if (FAILED(result))
    {
        throw std::runtime_error(
            messages ? std::string(static_cast<const char*>(messages->GetBufferPointer()))
                     : "the compiler failed with " + std::to_string(result));
    }
    const auto* bytes = static_cast<const unsigned char*>(object->GetBufferPointer());
    std::string text = "static const unsigned char " + name + "_BYTES[] = {";
    for (std::size_t i = 0; i < object->GetBufferSize(); ++i)
    {
        text += (i % 16 == 0 ? "\n" : " ") + std::to_string(bytes[i]) + ",";
    }
    return text + "};\nconst ShaderObject " + name + " = {" + name + "_BYTES, sizeof " + name +
           "_BYTES};\n";
}

} // namespace

int main(int argc, char** argv)
{
    try
    {
        if (argc != 3)
        {
            throw std::runtime_error("usage: qlt_compile_hlsl SOURCE.hlsl OUTPUT.cpp");
        }
        const std::string source = ReadFile(argv[1]);
        const std::string objects =
            Compile(source, argv[1], "VertexMain", "vs_5_0", "DIRECT_MODE_VERTEX_SHADER") +
            Compile(source, argv[1], "PixelMain", "ps_5_0", "DIRECT_MODE_PIXEL_SHADER");
        std::ofstream output(argv[2], std::ios::binary);
        output << "#include \"DirectModeShaders.h\"\n\nnamespace qlt\n{\n\n"
               << objects << "\n} // namespace qlt\n";
        if (!output.flush())
        {
            throw std::runtime_error(std::string("cannot write ") + argv[2]);
        }
        return 0;
    }
    catch (const std::exception& e)
    {
        std::fprintf(stderr, "qlt_compile_hlsl: %s\n", e.what());
        return 1;
    }
}
