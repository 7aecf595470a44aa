#include "Settings/PictureFile.h"

#include <fstream>

namespace qltxr
{

bool WritePicture(const std::string& path, const Picture& picture)
{
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
    file.write(reinterpret_cast<const char*>(picture.rgb.data()),
               static_cast<std::streamsize>(picture.rgb.size()));
    file.close();
    return file.good();
}

} // namespace qltxr
