#include "tinyply/tinyply.h"

#include "text/TextWriter.h"
#include "tinyply/BodyReader.h"
#include "tinyply/PlyHeader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <ostream>
#include <stdexcept>

namespace tinyply
{
namespace
{
// Properties to write: scalars of one type, or one list.
struct WriteGroup
{
    std::vector<std::string> vKeys;
    Type type;
    const std::uint8_t* pData;
    Type listType;
    std::size_t listCount;

    [[nodiscard]] bool isList() const noexcept { return listType != Type::INVALID; }
    [[nodiscard]] std::size_t getValuesPerRow() const noexcept { return isList() ? listCount : vKeys.size(); }
    [[nodiscard]] std::size_t getRowBytes() const noexcept { return getValuesPerRow() * sizeOf(type); }
};

struct WriteElement
{
    std::string name;
    std::size_t count;
    std::vector<WriteGroup> vGroups;
};

template <class T>
void writeExact(TARN_ZEF::TextWriter& out, const std::uint8_t* pValue)
{
    T value;
    std::memcpy(&value, pValue, sizeof(T));
    out.exact(value);
}

void writeAsciiValue(TARN_ZEF::TextWriter& out, Type type, const std::uint8_t* pValue)
{
    switch (type)
    {
    case Type::INT8:
        return writeExact<std::int8_t>(out, pValue);
    case Type::UINT8:
        return writeExact<std::uint8_t>(out, pValue);
    case Type::INT16:
        return writeExact<std::int16_t>(out, pValue);
    case Type::UINT16:
        return writeExact<std::uint16_t>(out, pValue);
    case Type::INT32:
        return writeExact<std::int32_t>(out, pValue);
    case Type::UINT32:
        return writeExact<std::uint32_t>(out, pValue);
    case Type::FLOAT32:
        return writeExact<float>(out, pValue);
    case Type::FLOAT64:
        return writeExact<double>(out, pValue);
    case Type::INVALID:
        break;
    }
}

void writeAsciiRow(TARN_ZEF::TextWriter& out, const WriteElement& element, std::size_t row)
{
    std::string_view separator;
    for (const WriteGroup& group : element.vGroups)
    {
        if (group.isList())
        {
            out.text(separator);
            out.exact(group.listCount);
            separator = " ";
        }
        const std::uint8_t* pValue = group.pData + row * group.getRowBytes();
        for (std::size_t i = 0; i < group.getValuesPerRow(); ++i, pValue += sizeOf(group.type))
        {
            out.text(separator);
            writeAsciiValue(out, group.type, pValue);
            separator = " ";
        }
    }
    out.text("\n");
}

// Values of one size, little-endian.
void writeBytes(TARN_ZEF::TextWriter& out, const std::uint8_t* pBytes, std::size_t numBytes, std::size_t size)
{
    const auto* pChars = reinterpret_cast<const char*>(pBytes);
    if constexpr (std::endian::native == std::endian::little)
    {
        out.text({pChars, numBytes});
        return;
    }
    for (std::size_t i = 0; i < numBytes; i += size)
    {
        std::string value(pChars + i, size);
        std::reverse(value.begin(), value.end());
        out.text(value);
    }
}

void writeBinaryRow(TARN_ZEF::TextWriter& out, const WriteElement& element, std::size_t row)
{
    for (const WriteGroup& group : element.vGroups)
    {
        for (std::size_t i = 0; group.isList() && i < sizeOf(group.listType); ++i)
        {
            const char byte =
                static_cast<char>(static_cast<std::uint64_t>(group.listCount) >> (8 * i) & 0xFF);
            out.text({&byte, 1});
        }
        const std::size_t rowBytes = group.getRowBytes();
        writeBytes(out, group.pData + row * rowBytes, rowBytes, sizeOf(group.type));
    }
}

void writeHeader(TARN_ZEF::TextWriter& out, const std::vector<WriteElement>& vElements, bool isBinary)
{
    out.text(isBinary ? "ply\nformat binary_little_endian 1.0\n" : "ply\nformat ascii 1.0\n");
    for (const WriteElement& element : vElements)
    {
        out.text("element " + element.name + " " + std::to_string(element.count) + "\n");
        for (const WriteGroup& group : element.vGroups)
        {
            for (const std::string& key : group.vKeys)
            {
                out.text("property ");
                if (group.isList())
                    out.text("list " + std::string(nameOf(group.listType)) + " ");
                out.text(std::string(nameOf(group.type)) + " " + key + "\n");
            }
        }
    }
    out.text("end_header\n");
}

[[nodiscard]] bool fitsListType(std::size_t listCount, Type listType) noexcept
{
    const bool bSigned = listType == Type::INT8 || listType == Type::INT16 || listType == Type::INT32;
    const std::size_t numBits = 8 * sizeOf(listType) - (bSigned ? 1 : 0);
    return static_cast<std::uint64_t>(listCount) >> numBits == 0;
}

} // namespace

struct PlyFile::Impl
{
    PlyHeader header;
    std::vector<Request> vRequests;
    std::vector<WriteElement> vToWrite;
};

PlyFile::PlyFile()
    : pImpl(std::make_unique<Impl>())
{
}

PlyFile::~PlyFile() = default;

// --- Reading ----------------------------------------------------------------------------------------------

bool PlyFile::parse_header(std::istream& is)
{
    pImpl->header = PlyHeader();
    pImpl->vRequests.clear();
    pImpl->header.parse(is);
    return true;
}

std::shared_ptr<PlyData> PlyFile::request_properties_from_element(
    const std::string& elementKey, const std::vector<std::string>& propertyKeys, std::uint32_t list_size_hint)
{
    Element* pElement = pImpl->header.find(elementKey);
    if (pElement == nullptr)
        throw std::invalid_argument("there is no element '" + elementKey + "'");

    std::vector<Property*> vProperties;
    for (const std::string& key : propertyKeys)
    {
        Property* pProperty = pElement->find(key);
        if (pProperty == nullptr)
            throw std::invalid_argument("element '" + elementKey + "' has no property '" + key + "'");
        if (pProperty->request != NO_REQUEST ||
            std::count(vProperties.begin(), vProperties.end(), pProperty) > 0)
            throw std::invalid_argument("property '" + key + "' is asked for twice");
        if (pProperty->isList() && propertyKeys.size() > 1)
            throw std::invalid_argument("the list '" + key + "' is asked for together with others");
        vProperties.push_back(pProperty);
    }
    if (vProperties.empty())
        throw std::invalid_argument("no property of element '" + elementKey + "' is asked for");

    const bool bOneType =
        std::all_of(vProperties.begin(), vProperties.end(),
                    [&vProperties](const Property* p) { return p->type == vProperties.front()->type; });
    auto pData = std::make_shared<PlyData>();
    pData->t = bOneType ? vProperties.front()->type : Type::FLOAT64;
    pData->isList = vProperties.front()->isList();
    for (std::size_t i = 0; i < vProperties.size(); ++i)
    {
        vProperties[i]->request = pImpl->vRequests.size();
        vProperties[i]->slot = i;
    }
    pImpl->vRequests.push_back({pData, list_size_hint, vProperties.size()});
    return pData;
}

void PlyFile::read(std::istream& is)
{
    BodyReader(pImpl->header, pImpl->vRequests).read(is);
}

// --- Writing ----------------------------------------------------------------------------------------------

void PlyFile::add_properties_to_element(const std::string& elementKey,
                                        const std::vector<std::string>& propertyKeys, Type type,
                                        std::size_t count, const std::uint8_t* data, Type listType,
                                        std::size_t listCount)
{
    if (type == Type::INVALID || isFloating(listType))
        throw std::invalid_argument("properties of element '" + elementKey + "' have no writable type");
    if (listType != Type::INVALID && (propertyKeys.size() != 1 || !fitsListType(listCount, listType)))
        throw std::invalid_argument("a list of element '" + elementKey +
                                    "' does not stand alone or is too long");

    auto it = std::find_if(pImpl->vToWrite.begin(), pImpl->vToWrite.end(),
                           [&elementKey](const WriteElement& e) { return e.name == elementKey; });
    if (it == pImpl->vToWrite.end())
        it = pImpl->vToWrite.insert(it, WriteElement{elementKey, count, {}});
    if (it->count != count)
        throw std::invalid_argument("properties of element '" + elementKey + "' differ in their rows");
    it->vGroups.push_back({propertyKeys, type, data, listType, listCount});
}

void PlyFile::write(std::ostream& os, bool isBinary)
{
    TARN_ZEF::TextWriter out(os, 18);
    writeHeader(out, pImpl->vToWrite, isBinary);
    for (const WriteElement& element : pImpl->vToWrite)
    {
        for (std::size_t row = 0; row < element.count; ++row)
        {
            if (isBinary)
                writeBinaryRow(out, element, row);
            else
                writeAsciiRow(out, element, row);
        }
    }
}

} // namespace tinyply
