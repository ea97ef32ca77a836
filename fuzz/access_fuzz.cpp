// Databases: the input is one, with its runs of zeros left out so that seeds stay small: a number of zeros, a number
// of bytes and these bytes, over and over; numbers have two bytes, the lower one first. It is listed, and all of its
// tables are read, or it is refused.
#include "FuzzSupport.h"
#include "providers/access/Access.h"
#include "providers/common/CSourceError.h"

#include <algorithm>
#include <vector>

namespace {

using namespace NSTQ;
using NSTQ::Fuzz::Require;

constexpr std::size_t largestFile = 1U << 20;
/// A forged table may have many more than the file has bytes.
constexpr int rowsRead = 20'000;
constexpr std::size_t columnsRead = 50;

class CBytes : public Providers::IRandomAccess {
public:
    explicit CBytes(std::vector<unsigned char> bytes) : m_bytes(std::move(bytes)) {}
    std::uint64_t Size() const override { return m_bytes.size(); }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override {
        if (offset > m_bytes.size() || target.size() > m_bytes.size() - offset)
            throw Providers::CSourceError("past the end");
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(offset), target.size(), target.begin());
    }

private:
    std::vector<unsigned char> m_bytes;
};

std::vector<unsigned char> Expand(std::string_view packed) {
    std::vector<unsigned char> bytes;
    const auto takeNumber = [&packed] {
        const auto byte = [&](std::size_t i) {
            return i < packed.size() ? static_cast<unsigned char>(packed[i]) : 0U;
        };
        const std::size_t number = byte(0) | byte(1) << 8;
        packed.remove_prefix(std::min<std::size_t>(2, packed.size()));
        return number;
    };
    while (!packed.empty() && bytes.size() < largestFile) {
        bytes.resize(bytes.size() + takeNumber());
        const std::string_view literal = packed.substr(0, takeNumber());
        bytes.insert(bytes.end(), literal.begin(), literal.end());
        packed.remove_prefix(literal.size());
    }
    return bytes;
}

void CheckError(const Platform::_com_error& error) {
    Require(error.Error() == Platform::E_FAIL || error.Error() == Platform::DB_E_NOTABLE ||
                error.Error() == Platform::DB_SEC_E_AUTH_FAILED,
            "a failure has its documented code");
}

void ReadTable(Platform::IDataSource& source, std::u16string_view name) {
    try {
        const auto rows = source.OpenTable(name);
        const std::size_t columns = std::min(rows->GetColumnNames().size(), columnsRead);
        for (int i = 0; i < rowsRead && rows->MoveNext(); ++i) {
            for (std::size_t column = 0; column < columns; ++column) {
                const Platform::VARIANT& value = rows->GetValue(column);
                Platform::CVariant text;
                Require(value.vt == Platform::VT_NULL ||
                            Platform::VariantChangeType(text.Get(), &value, 0, Platform::VT_BSTR) == Platform::S_OK,
                        "each value has a text");
            }
        }
    } catch (const Platform::_com_error& error) {
        CheckError(error);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view packed(reinterpret_cast<const char*>(data), size);
    try {
        const auto source = Providers::OpenAccess(Providers::CSourceInput(std::make_shared<CBytes>(Expand(packed))),
                                                  {.strPath = "fuzz", .strPassWord = "password"});
        for (const Platform::STableSchema& table : source->ListTables())
            ReadTable(*source, table.strName);
    } catch (const Platform::_com_error& error) {
        CheckError(error);
    }
    return 0;
}
