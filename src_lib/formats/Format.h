// Reading and writing files of points and triangles, one source file a format. A new format is such a file with
// one Format in it, and a line in the table of Format.cpp; tests/formats has one line a format too.
//
// Functions of a format know nothing of names, messages and other formats: they take an InputFile or an
// OutputFile and throw FileError, to which readFiles.cpp and writeFiles.cpp add the name.
#ifndef ZEF_FORMAT_H
#define ZEF_FORMAT_H

#include "formats/InputFile.h"
#include "formats/OutputFile.h"
#include "zef_formats.h"

#include <span>
#include <string_view>

namespace TARN_ZEF
{
struct Format
{
    std::string_view name;
    std::string_view
        extensions; // in small letters, each with a point before and a blank after it: ".xyz .asc "

    // Whether a file with these first bytes, and of that size, is of this format; 0: no, 1: may be, 2: surely.
    int (*sniff)(std::string_view head, u64 fileBytes) = nullptr;

    // Null where the format has no such thing.
    void (*readPoints)(InputFile& file, const ReadOptions& options, PointData& data) = nullptr;
    void (*readTriangles)(InputFile& file, TriangleData& data) = nullptr;
    void (*writePoints)(OutputFile& file, const PointData& data, const WriteOptions& options) = nullptr;
    void (*writeTriangles)(OutputFile& file, const TriangleData& data, const WriteOptions& options) = nullptr;

    // Whether a file of a format with both holds triangles, not points alone; null: as readTriangles tells. Reads no
    // farther than to the first one.
    bool (*holdsTriangles)(InputFile& file) = nullptr;

    [[nodiscard]] bool hasExtension(std::string_view extension) const;
};

extern const Format BIN_FORMAT;
extern const Format GLB_FORMAT;
extern const Format LAS_FORMAT;
extern const Format OBJ_FORMAT;
extern const Format OFF_FORMAT;
extern const Format PCD_FORMAT;
extern const Format PLY_FORMAT;
extern const Format PTS_FORMAT;
extern const Format PTX_FORMAT;
extern const Format STL_FORMAT;
extern const Format TEXT_FORMAT;

// In the order in which contents are tried.
[[nodiscard]] std::span<const Format* const> getFormats();

// The extensions of the formats for which can(format) is true, with a blank between them.
template <class Can>
[[nodiscard]] std::string listExtensions(Can can)
{
    std::string list;
    for (const Format* pFormat : getFormats())
        if (can(*pFormat))
            list.append(pFormat->extensions);
    return list.substr(0, list.rfind(' '));
}

// In small letters, with its point; empty without one.
[[nodiscard]] std::string getExtension(const std::string& path);
// By extension; null if it is not known.
[[nodiscard]] const Format* findFormat(const std::string& path);
// By the first bytes; null if they tell nothing.
[[nodiscard]] const Format* findFormat(std::string_view head, u64 fileBytes);

} // namespace TARN_ZEF

#endif
