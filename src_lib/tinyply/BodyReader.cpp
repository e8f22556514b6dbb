#include "tinyply/BodyReader.h"

#include "text/ByteSource.h"
#include "text/LineReader.h"
#include "text/TextNumbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <stdexcept>

namespace tinyply
{
namespace
{
// Rows or entries that are copied in one go.
constexpr std::size_t BATCH_BYTES = std::size_t{1} << 16;

// Calls a function object with a value of the C++ type.
template <class Function>
auto dispatch(Type type, Function f)
{
    switch (type)
    {
    case Type::INT8:
        return f(std::int8_t{});
    case Type::UINT8:
        return f(std::uint8_t{});
    case Type::INT16:
        return f(std::int16_t{});
    case Type::UINT16:
        return f(std::uint16_t{});
    case Type::INT32:
        return f(std::int32_t{});
    case Type::UINT32:
        return f(std::uint32_t{});
    case Type::FLOAT32:
        return f(float{});
    case Type::FLOAT64:
    case Type::INVALID:
        break;
    }
    return f(double{});
}

template <class T>
[[nodiscard]] T load(const char* pSource, bool bSwapBytes) noexcept
{
    std::array<char, sizeof(T)> aBytes;
    std::memcpy(aBytes.data(), pSource, sizeof(T));
    if (bSwapBytes)
        std::reverse(aBytes.begin(), aBytes.end());
    return std::bit_cast<T>(aBytes);
}

template <class T>
void store(T value, std::uint8_t* pTarget) noexcept
{
    std::memcpy(pTarget, &value, sizeof(T));
}

[[noreturn]] void failAtLine(std::uint64_t line, const std::string& reason)
{
    throw std::runtime_error("line " + std::to_string(line) + ": " + reason);
}

[[noreturn]] void failAtByte(const TARN_ZEF::ByteSource& source, const std::string& reason)
{
    throw std::runtime_error("byte " + std::to_string(source.getOffset()) + ": " + reason);
}

[[noreturn]] void failTruncated(const TARN_ZEF::ByteSource& source, const Element& element)
{
    throw std::runtime_error("byte " + std::to_string(source.getOffset() + source.getAvailable()) +
                             ": the file ends within element '" + element.name + "'");
}

[[nodiscard]] std::string quote(std::string_view token)
{
    return "'" + std::string(token.substr(0, 40)) + "'";
}

} // namespace

BodyReader::BodyReader(const PlyHeader& header_, std::vector<Request>& vRequests_)
    : header(header_)
    , vRequests(vRequests_)
    , vRowTargets(vRequests_.size(), nullptr)
    , bSwapBytes((header_.format == Format::BINARY_BIG_ENDIAN) != (std::endian::native == std::endian::big))
{
}

void BodyReader::read(std::istream& is)
{
    if (header.format == Format::ASCII)
        readAscii(is);
    else
        readBinary(is);
}

// --- Data of the requests ---------------------------------------------------------------------------------

// Only where the rows are known to be there.
void BodyReader::reserveRows(const Element& element)
{
    for (const Property& property : element.vProperties)
    {
        if (property.request == NO_REQUEST)
            continue;
        const Request& request = vRequests[property.request];
        request.pData->count = static_cast<std::size_t>(element.count);
        if (bKnownSize)
        {
            const std::size_t numPerRow = property.isList() ? request.listSizeHint : 1;
            request.pData->buffer.vBytes.reserve(request.pData->count * numPerRow * getRowBytes(request));
        }
    }
}

std::uint8_t* BodyReader::appendRows(Request& request, std::size_t numRows) const
{
    std::vector<std::uint8_t>& vBytes = request.pData->buffer.vBytes;
    const std::size_t size = vBytes.size();
    vBytes.resize(size + numRows * getRowBytes(request));
    return vBytes.data() + size;
}

void BodyReader::addListCount(Request& request, std::uint32_t num, std::uint64_t row) const
{
    std::vector<std::uint32_t>& vCounts = request.pData->listCounts;
    if (vCounts.empty() && num == request.listSizeHint)
        return;
    if (vCounts.empty())
        vCounts.assign(static_cast<std::size_t>(row), request.listSizeHint);
    vCounts.push_back(num);
}

// --- ASCII: a row is a line -------------------------------------------------------------------------------

void BodyReader::readAscii(std::istream& is)
{
    TARN_ZEF::ByteSource source(is);
    TARN_ZEF::LineReader lines(source, TARN_ZEF::LineEnds::LF_OR_CR);
    lines.setLineNumber(header.numLines);
    if (const auto numBytes = source.getRemaining())
    {
        header.checkFits(*numBytes, source.getOffset() + *numBytes);
        bKnownSize = true;
    }
    for (const Element& element : header.vElements)
    {
        if (!element.vProperties.empty())
            readAsciiElement(element, lines);
    }
}

void BodyReader::readAsciiElement(const Element& element, TARN_ZEF::LineReader& lines)
{
    reserveRows(element);
    const bool bRequested = element.isRequested();
    for (std::uint64_t row = 0; row < element.count;)
    {
        std::string_view line;
        if (!lines.next(line))
            failAtLine(lines.getLineNumber(), "the file ends after " + std::to_string(row) + " of " +
                                                  std::to_string(element.count) + " rows of element '" +
                                                  element.name + "'");
        if (std::all_of(line.begin(), line.end(), TARN_ZEF::isBlank))
            continue;
        try
        {
            if (bRequested)
                readAsciiRow(element, row, line.data(), line.data() + line.size());
        }
        catch (const std::invalid_argument& e)
        {
            failAtLine(lines.getLineNumber(), e.what());
        }
        ++row;
    }
}

// Throws std::invalid_argument without the line.
void BodyReader::readAsciiRow(const Element& element, std::uint64_t row, const char* p, const char* pEnd)
{
    const auto nextValue = [&p, pEnd]()
    {
        const std::string_view token = TARN_ZEF::nextToken(p, pEnd);
        if (token.empty())
            throw std::invalid_argument("the row has too few values");
        return token;
    };

    std::fill(vRowTargets.begin(), vRowTargets.end(), nullptr);
    for (const Property& property : element.vProperties)
    {
        const bool bWanted = property.request != NO_REQUEST;
        if (!property.isList())
        {
            const std::string_view token = nextValue();
            if (!bWanted)
                continue;
            std::uint8_t*& pRow = vRowTargets[property.request];
            if (pRow == nullptr)
                pRow = appendRows(vRequests[property.request], 1);
            const std::size_t slotBytes = sizeOf(vRequests[property.request].pData->t);
            readAsciiScalar(property, token, pRow + property.slot * slotBytes);
            continue;
        }
        const std::string_view token = nextValue();
        std::uint32_t num = 0;
        if (!TARN_ZEF::parseNumber(token, num))
            throw std::invalid_argument(quote(token) + " is no count of a list");
        if (bWanted)
            addListCount(vRequests[property.request], num, row);
        for (std::uint32_t i = 0; i < num; ++i)
        {
            const std::string_view entry = nextValue();
            if (bWanted)
                readAsciiScalar(property, entry, appendRows(vRequests[property.request], 1));
        }
    }
}

void BodyReader::readAsciiScalar(const Property& property, std::string_view token, std::uint8_t* pTarget)
{
    const bool bSameType = property.type == vRequests[property.request].pData->t;
    const bool bOK = dispatch(property.type,
                              [token, bSameType, pTarget](auto value)
                              {
                                  if (!TARN_ZEF::parseNumber(token, value))
                                      return false;
                                  if (bSameType)
                                      store(value, pTarget);
                                  else
                                      store(static_cast<double>(value), pTarget);
                                  return true;
                              });
    if (!bOK)
        throw std::invalid_argument(quote(token) + " is no " + std::string(nameOf(property.type)));
}

// --- Binary -----------------------------------------------------------------------------------------------

void BodyReader::readBinary(std::istream& is)
{
    TARN_ZEF::ByteSource source(is);
    if (const auto numBytes = source.getRemaining())
    {
        header.checkFits(*numBytes, source.getOffset() + *numBytes);
        bKnownSize = true;
    }
    for (const Element& element : header.vElements)
    {
        if (element.vProperties.empty())
            continue;
        reserveRows(element);
        if (element.hasLists())
            readListRows(element, source);
        else
            readFixedRows(element, source);
    }
}

void BodyReader::readFixedRows(const Element& element, TARN_ZEF::ByteSource& source)
{
    const std::size_t rowBytes = element.getLeastRowBytes(header.format);
    const bool bRequested = element.isRequested();
    std::uint64_t numLeft = element.count;
    while (numLeft > 0)
    {
        const auto numRows = static_cast<std::size_t>(
            std::min<std::uint64_t>(numLeft, std::max<std::size_t>(1, BATCH_BYTES / rowBytes)));
        if (!source.need(numRows * rowBytes))
            failTruncated(source, element);
        if (bRequested)
        {
            std::fill(vRowTargets.begin(), vRowTargets.end(), nullptr);
            const char* pSource = source.getData();
            for (const Property& property : element.vProperties)
            {
                if (property.request != NO_REQUEST)
                {
                    std::uint8_t*& pRows = vRowTargets[property.request];
                    if (pRows == nullptr)
                        pRows = appendRows(vRequests[property.request], numRows);
                    copyColumn(property, pSource, rowBytes, pRows, numRows);
                }
                pSource += sizeOf(property.type);
            }
        }
        source.consume(numRows * rowBytes);
        numLeft -= numRows;
    }
}

// One property over some rows; for a list some of its entries.
void BodyReader::copyColumn(const Property& property, const char* pSource, std::size_t sourceStride,
                            std::uint8_t* pTarget, std::size_t numRows) const
{
    const Request& request = vRequests[property.request];
    const std::size_t targetStride = getRowBytes(request);
    const bool bSameType = property.type == request.pData->t;
    pTarget += property.slot * sizeOf(request.pData->t);
    dispatch(property.type,
             [=, this](auto zero)
             {
                 using T = decltype(zero);
                 for (std::size_t i = 0; i < numRows; ++i)
                 {
                     const T value = load<T>(pSource + i * sourceStride, bSwapBytes);
                     if (bSameType)
                         store(value, pTarget + i * targetStride);
                     else
                         store(static_cast<double>(value), pTarget + i * targetStride);
                 }
             });
}

void BodyReader::readListRows(const Element& element, TARN_ZEF::ByteSource& source)
{
    for (std::uint64_t row = 0; row < element.count; ++row)
    {
        std::fill(vRowTargets.begin(), vRowTargets.end(), nullptr);
        for (const Property& property : element.vProperties)
        {
            if (!source.need(sizeOf(property.isList() ? property.listType : property.type)))
                failTruncated(source, element);
            if (property.isList())
            {
                readListEntries(property, row, source);
                continue;
            }
            if (property.request != NO_REQUEST)
            {
                std::uint8_t*& pRow = vRowTargets[property.request];
                if (pRow == nullptr)
                    pRow = appendRows(vRequests[property.request], 1);
                copyColumn(property, source.getData(), 0, pRow, 1);
            }
            source.consume(sizeOf(property.type));
        }
    }
}

// From the count on, which must be at hand.
void BodyReader::readListEntries(const Property& property, std::uint64_t row, TARN_ZEF::ByteSource& source)
{
    const auto num =
        dispatch(property.listType, [this, &source](auto zero)
                 { return static_cast<std::int64_t>(load<decltype(zero)>(source.getData(), bSwapBytes)); });
    const std::size_t entryBytes = sizeOf(property.type);
    const std::optional<std::uint64_t> numBytes = source.getRemaining();
    if (num < 0 || (numBytes && static_cast<std::uint64_t>(num) > *numBytes / entryBytes))
        failAtByte(source, "a list of " + std::to_string(num) + " entries does not fit the file");
    source.consume(sizeOf(property.listType));

    if (property.request != NO_REQUEST)
        addListCount(vRequests[property.request], static_cast<std::uint32_t>(num), row);
    for (auto numLeft = static_cast<std::size_t>(num); numLeft > 0;)
    {
        const std::size_t numEntries = std::min(numLeft, BATCH_BYTES / entryBytes);
        if (!source.need(numEntries * entryBytes))
            failAtByte(source, "the file ends within a list");
        if (property.request != NO_REQUEST)
        {
            std::uint8_t* pTarget = appendRows(vRequests[property.request], numEntries);
            copyColumn(property, source.getData(), entryBytes, pTarget, numEntries);
        }
        source.consume(numEntries * entryBytes);
        numLeft -= numEntries;
    }
}

} // namespace tinyply
