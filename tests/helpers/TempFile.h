#ifndef ZEF_TESTS_TEMPFILE_H
#define ZEF_TESTS_TEMPFILE_H

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace TARN_ZEF
{
// A name for a file of its own in the folder for temporary files; the file goes away with the object.
class TempFile
{
public:
    // extension  with its point
    explicit TempFile(const std::string& extension)
    {
        static int count = 0;
        const std::string name =
            "zef_test_" + std::to_string(getpid()) + "_" + std::to_string(count++) + extension;
        path = (std::filesystem::temp_directory_path() / name).string();
    }
    TempFile(const std::string& extension, const std::string& content)
        : TempFile(extension)
    {
        write(content);
    }
    ~TempFile() { std::remove(path.c_str()); }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;

    void write(const std::string& content) const
    {
        std::ofstream(path, std::ios::binary)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    [[nodiscard]] std::string read() const
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    [[nodiscard]] const char* c_str() const { return path.c_str(); }

    std::string path;
};

} // namespace TARN_ZEF

#endif
