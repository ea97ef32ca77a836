#include "providers/access/CCatalogue.h"

#include "platform/codepage/AsciiCase.h"
#include "providers/access/CSystemRows.h"
#include "providers/access/SCColumnProperties.h"
#include "providers/access/SCNameOrder.h"
#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

constexpr std::uint32_t cataloguePage = 2;

constexpr std::uint32_t tableType = 1;
constexpr std::uint32_t linkedOdbcType = 4;
constexpr std::uint32_t queryType = 5;
constexpr std::uint32_t linkedType = 6;

/// More than twice the limits of a database: objects, and characters of a name.
constexpr std::size_t maxObjects = 1U << 17;
constexpr std::size_t maxName = 255;

constexpr std::uint32_t systemFlag = 0x80000000;
constexpr std::uint32_t programFlag = 0x2;
/// Of objects that are removed when the database is compacted. Hidden ones (0x8) are data like any others.
constexpr std::uint32_t temporaryFlag = 0x1;
constexpr std::u16string_view programPrefix = u"MSys";
constexpr char16_t temporarySign = u'~';

std::optional<EObjectKind> GetKind(std::uint32_t type, std::uint32_t flags, std::u16string_view name) {
    const bool isOfProgram = (flags & (programFlag | temporaryFlag)) != 0 || name.front() == temporarySign ||
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

/// The rows of the catalog with the columns that are used.
class CObjectRows : public CSystemRows {
public:
    explicit CObjectRows(const std::shared_ptr<const CDatabase>& database)
        : CSystemRows(database, ReadTableDefinition(*database, cataloguePage)) {}

    std::uint32_t GetId() { return GetNumber(m_id); }
    std::uint32_t GetType() { return GetNumber(m_type); }
    std::uint32_t GetFlags() { return GetNumber(m_flags); }
    std::u16string_view GetName() { return GetText(m_name); }
    std::span<const unsigned char> GetProperties() { return GetBytes(m_properties); }

private:
    std::size_t m_id = Find(u"Id");
    std::size_t m_name = Find(u"Name");
    std::size_t m_type = Find(u"Type");
    std::size_t m_flags = Find(u"Flags");
    std::size_t m_properties = Find(u"LvProp");
};

} // namespace

CCatalogue::CCatalogue(std::shared_ptr<const CDatabase> database) : m_database(std::move(database)) {
    CObjectRows rows(m_database);
    while (rows.MoveNext()) {
        const std::u16string_view stored = rows.GetName();
        if (stored.size() > maxName || m_objects.size() == maxObjects)
            throw CSourceError("the catalog is damaged: it has a name of more than " + std::to_string(maxName) +
                               " characters, or more than " + std::to_string(maxObjects) + " objects");
        const std::u16string name(stored);
        const std::uint32_t flags = rows.GetFlags();
        const auto kind = name.empty() ? std::nullopt : GetKind(rows.GetType(), flags, name);
        if (kind)
            m_objects.push_back({name, *kind, rows.GetId(), flags, rows.GetPlace()});
    }
    std::ranges::stable_sort(m_objects, [](const SDatabaseObject& left, const SDatabaseObject& right) {
        return SCNameOrder::Compare(left.name, right.name) < 0;
    });
}

const SDatabaseObject* CCatalogue::Find(std::u16string_view name) const {
    const auto found = std::lower_bound(m_objects.begin(), m_objects.end(), name,
                                        [](const SDatabaseObject& object, std::u16string_view wanted) {
                                            return SCNameOrder::Compare(object.name, wanted) < 0;
                                        });
    return found == m_objects.end() || SCNameOrder::Compare(found->name, name) != 0 ? nullptr : &*found;
}

STableDefinition CCatalogue::ReadTable(const SDatabaseObject& object) const {
    constexpr std::uint32_t pageMask = 0xFFFFFF;
    STableDefinition table = ReadTableDefinition(*m_database, object.id & pageMask);
    if (std::ranges::none_of(table.columns, &SColumn::isCalculated))
        return table;
    CObjectRows rows(m_database);
    rows.MoveTo(object.place);
    SCColumnProperties::TakeResultTypes(rows.GetProperties(), table.columns);
    return table;
}

} // namespace NSTQ::Providers
