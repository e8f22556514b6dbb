#ifndef ZEF_BODYREADER_H
#define ZEF_BODYREADER_H

#include "tinyply/PlyHeader.h"
#include "tinyply/tinyply.h"

#include <memory>
#include <vector>

namespace TARN_ZEF
{
class ByteSource;
class LineReader;
} // namespace TARN_ZEF

namespace tinyply
{
// Data that a caller wants, and where its values go.
struct Request
{
    std::shared_ptr<PlyData> pData;
    std::uint32_t listSizeHint = 0;
    std::size_t numSlots = 1; // values per row; 1 for a list's entries
};

// Reads what follows the header of a PLY file into the data of the requests.
//
// Ownership:  refers to header and requests, which must outlive it.
// Errors:     std::runtime_error with the line (ASCII) or the byte (binary).
// Cost:       memory for what is requested, and one block of the file. No count of the file is trusted: each
//             is checked against the bytes that are left, or, in a stream of unknown length, data grows with
//             what really comes.
class BodyReader
{
public:
    BodyReader(const PlyHeader& header_, std::vector<Request>& vRequests_);

    // is must stand at the first byte of data.
    void read(std::istream& is);

private:
    void reserveRows(const Element& element);
    [[nodiscard]] std::uint8_t* appendRows(Request& request, std::size_t numRows) const;
    void addListCount(Request& request, std::uint32_t num, std::uint64_t row) const;

    void readAscii(std::istream& is);
    void readAsciiElement(const Element& element, TARN_ZEF::LineReader& lines);
    void readAsciiRow(const Element& element, std::uint64_t row, const char* p, const char* pEnd);
    void readAsciiScalar(const Property& property, std::string_view token, std::uint8_t* pTarget);

    void readBinary(std::istream& is);
    void readFixedRows(const Element& element, TARN_ZEF::ByteSource& source);
    void readListRows(const Element& element, TARN_ZEF::ByteSource& source);
    void readListEntries(const Property& property, std::uint64_t row, TARN_ZEF::ByteSource& source);
    void copyColumn(const Property& property, const char* pSource, std::size_t sourceStride,
                    std::uint8_t* pTarget, std::size_t numRows) const;

    // Bytes of a row of a request's data.
    [[nodiscard]] static std::size_t getRowBytes(const Request& request) noexcept
    {
        return request.numSlots * sizeOf(request.pData->t);
    }

    const PlyHeader& header;
    std::vector<Request>& vRequests;
    std::vector<std::uint8_t*> vRowTargets; // by request: where the present row goes
    bool bSwapBytes;
    bool bKnownSize = false;
};

} // namespace tinyply

#endif
