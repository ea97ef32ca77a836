#include "providers/access/CCatalogue.h"

#include "platform/ado/TextCase.h"
#include "providers/access/CTableRows.h"
#include "providers/access/SCColumnProperties.h"
#include "providers/access/SCNameOrder.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

constexpr std::uint32_t cataloguePage = 2;

constexpr std::int64_t tableType = 1;
constexpr std::int64_t linkedOdbcType = 4;
constexpr std::int64_t queryType = 5;
constexpr std::int64_t linkedType = 6;

constexpr std::uint32_t systemFlag = 0x80000000;
constexpr std::uint32_t programFlag = 0x2;
constexpr std::uint32_t hiddenFlags = 0x1 | 0x8;
constexpr std::u16string_view programPrefix = u"MSys";
constexpr char16_t temporarySign = u'~';

std::optional<EObjectKind> GetKind(std::int64_t type, std::uint32_t flags, std::u16string_view name) {
    const bool isOfProgram = (flags & (programFlag | hiddenFlags)) != 0 || name.front() == temporarySign ||
                             IsEqualIgnoringCase(name.substr(0, programPrefix.size()), programPrefix);
    switch (type) {
    case tableType:
        return (flags & systemFlag) != 0 ? EObjectKind::SystemTable
               : isOfProgram             ? EObjectKind::AccessTable
                                         : EObjectKind::Table;
    case linkedOdbcType:
        return EObjectKind::LinkedOdbcTable;
    case linkedType:
        return EObjectKind::LinkedTable;
    case queryType:
        return isOfProgram ? std::nullopt : std::optional(EObjectKind::Query);
    default:
        return std::nullopt;
    }
}

/// The rows of the catalogue with the columns that are of interest.
class CObjectRows {
public:
    explicit CObjectRows(const std::shared_ptr<const CDatabase>& database)
        : m_rows(database, ReadTableDefinition(*database, cataloguePage)) {}

    bool MoveNext() { return m_rows.MoveNext(); }
    std::int64_t GetId() { return GetNumber(m_id); }
    std::int64_t GetType() { return GetNumber(m_type); }
    std::uint32_t GetFlags() { return static_cast<std::uint32_t>(GetNumber(m_flags)); }
    std::u16string_view GetName() {
        const VARIANT& value = m_rows.GetValue(m_name);
        return value.vt == VT_BSTR ? BstrView(value.bstrVal) : std::u16string_view();
    }
    std::span<const unsigned char> GetProperties() { return m_rows.GetBytes(m_properties); }

private:
    std::size_t Find(std::u16string_view name) const {
        const auto& names = m_rows.GetColumnNames();
        const auto found = std::ranges::find(names, name);
        if (found == names.end())
            throw CSourceError("its catalogue has no column " + AnsiFromWide(name));
        return static_cast<std::size_t>(found - names.begin());
    }
    std::int64_t GetNumber(std::size_t column) {
        const VARIANT& value = m_rows.GetValue(column);
        return value.vt == VT_I4 ? value.lVal : value.vt == VT_I2 ? value.iVal : 0;
    }

    CTableRows m_rows;
    std::size_t m_id = Find(u"Id");
    std::size_t m_name = Find(u"Name");
    std::size_t m_type = Find(u"Type");
    std::size_t m_flags = Find(u"Flags");
    std::size_t m_properties = Find(u"LvProp");
};

} // namespace

CCatalogue::CCatalogue(std::shared_ptr<const CDatabase> database) : m_pDatabase(std::move(database)) {
    CObjectRows rows(m_pDatabase);
    while (rows.MoveNext()) {
        const std::u16string_view name = rows.GetName();
        if (name.empty())
            continue;
        if (const auto kind = GetKind(rows.GetType(), rows.GetFlags(), name))
            m_objects.push_back(
                {std::u16string(name), *kind, static_cast<std::uint32_t>(rows.GetId()), rows.GetFlags()});
    }
    std::ranges::stable_sort(m_objects, [](const SDatabaseObject& left, const SDatabaseObject& right) {
        return SCNameOrder::Compare(left.strName, right.strName) < 0;
    });
}

const SDatabaseObject* CCatalogue::Find(std::u16string_view name) const {
    const auto found = std::ranges::find_if(
        m_objects, [name](const SDatabaseObject& object) { return SCNameOrder::Compare(object.strName, name) == 0; });
    return found == m_objects.end() ? nullptr : &*found;
}

STableDefinition CCatalogue::ReadTable(const SDatabaseObject& object) const {
    constexpr std::uint32_t pageMask = 0xFFFFFF;
    STableDefinition table = ReadTableDefinition(*m_pDatabase, object.id & pageMask);
    if (std::ranges::any_of(table.columns, &SColumn::isCalculated)) {
        CObjectRows rows(m_pDatabase);
        while (rows.MoveNext()) {
            if (static_cast<std::uint32_t>(rows.GetId()) == object.id)
                SCColumnProperties::TakeResultTypes(rows.GetProperties(), table.columns);
        }
    }
    return table;
}

} // namespace NSTQ::Providers
