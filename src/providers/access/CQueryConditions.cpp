#include "providers/access/CQueryConditions.h"

#include "providers/access/CQueryTokens.h"
#include "providers/access/SCNameOrder.h"

#include <algorithm>
#include <array>
#include <compare>
#include <variant>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

struct SLiteral {
    EValueClass kind;
    std::u16string text;
    double number;
};

struct SNothing {}; ///< an unsupported condition
struct SChecked {}; ///< a condition that has been stored
struct SColumnOperand {
    std::size_t column;
};
using CNode = std::variant<SNothing, SChecked, SColumnOperand, SLiteral>;

struct SComparisonSign {
    std::u16string_view sign;
    EComparison comparison;
    EComparison exchanged; ///< with the operands exchanged
};
constexpr std::array<SComparisonSign, 6> comparisonSigns = {{
    {u"=", EComparison::Equal, EComparison::Equal},
    {u"<>", EComparison::NotEqual, EComparison::NotEqual},
    {u"<", EComparison::Less, EComparison::Greater},
    {u"<=", EComparison::LessOrEqual, EComparison::GreaterOrEqual},
    {u">", EComparison::Greater, EComparison::Less},
    {u">=", EComparison::GreaterOrEqual, EComparison::LessOrEqual},
}};

/// Both operands and conditions may be in brackets.
class CConditionParser {
public:
    CConditionParser(std::u16string_view text, const CColumnScope& scope,
                     std::vector<CQueryConditions::SCondition>& conditions)
        : m_tokens(text), m_scope(scope), m_conditions(conditions) {}

    bool Parse() { return Is<SChecked>(ParseAll(0)) && m_tokens.Current().kind == ETokenKind::End; }

private:
    static constexpr int maxDepth = 50;

    template <class TKind>
    static bool Is(const CNode& node) {
        return std::holds_alternative<TKind>(node);
    }

    CNode ParseAll(int depth) {
        CNode node = ParseOne(depth);
        while (m_tokens.Take(u"AND")) {
            if (!Is<SChecked>(node) || !Is<SChecked>(node = ParseOne(depth)))
                return SNothing();
        }
        return node;
    }

    CNode ParseOne(int depth) {
        CNode left = ParseOperand(depth);
        if (m_tokens.Take(u"IS"))
            return PutNullTest(left);
        if (m_tokens.Take(u"BETWEEN"))
            return ParseBetween(left, depth);
        for (const SComparisonSign& sign : comparisonSigns) {
            if (!m_tokens.Take(sign.sign))
                continue;
            const CNode right = ParseOperand(depth);
            return Is<SLiteral>(left) ? Put(right, sign.exchanged, left) : Put(left, sign.comparison, right);
        }
        return left;
    }

    CNode ParseOperand(int depth) {
        if (m_tokens.Take(u"(")) {
            const CNode inner = depth < maxDepth ? ParseAll(depth + 1) : CNode();
            return m_tokens.Take(u")") ? inner : CNode();
        }
        const bool isNegative = m_tokens.Take(u"-");
        const SToken token = m_tokens.Current();
        if (isNegative && token.kind != ETokenKind::Number)
            return SNothing();
        if (token.kind == ETokenKind::Name)
            return ParseColumn();
        m_tokens.Advance();
        switch (token.kind) {
        case ETokenKind::Number:
            return SLiteral{EValueClass::Number, {}, isNegative ? -token.number : token.number};
        case ETokenKind::Date:
            return SLiteral{EValueClass::Date, {}, token.number};
        case ETokenKind::Text:
            return SLiteral{EValueClass::Text, token.text, 0};
        case ETokenKind::Keyword:
            if (token.text == u"TRUE" || token.text == u"YES")
                return SLiteral{EValueClass::Number, {}, -1};
            if (token.text == u"FALSE" || token.text == u"NO")
                return SLiteral{EValueClass::Number, {}, 0};
            return SNothing();
        default:
            return SNothing();
        }
    }

    CNode ParseColumn() {
        std::u16string name = m_tokens.Current().text;
        m_tokens.Advance();
        if (m_tokens.Take(u".")) {
            if (!m_scope.IsTable(name) || m_tokens.Current().kind != ETokenKind::Name)
                return SNothing();
            name = m_tokens.Current().text;
            m_tokens.Advance();
        }
        const auto column = m_scope.Find(name);
        return column ? CNode(SColumnOperand{*column}) : CNode();
    }

    CNode ParseBetween(const CNode& column, int depth) {
        const CNode low = ParseOperand(depth);
        if (!m_tokens.Take(u"AND"))
            return SNothing();
        const CNode high = ParseOperand(depth);
        // The database exchanges bounds in the wrong order.
        if (!Is<SLiteral>(low) || !Is<SLiteral>(high) || std::get<SLiteral>(low).kind == EValueClass::Text ||
            std::get<SLiteral>(low).number > std::get<SLiteral>(high).number)
            return SNothing();
        const bool isPut = Is<SChecked>(Put(column, EComparison::GreaterOrEqual, low)) &&
                           Is<SChecked>(Put(column, EComparison::LessOrEqual, high));
        return isPut ? CNode(SChecked()) : CNode();
    }

    CNode PutNullTest(const CNode& column) {
        const bool isNegated = m_tokens.Take(u"NOT");
        if (!Is<SColumnOperand>(column) || !m_tokens.Take(u"NULL"))
            return SNothing();
        m_conditions.push_back({std::get<SColumnOperand>(column).column,
                                isNegated ? EComparison::IsNotNull : EComparison::IsNull,
                                {},
                                0});
        return SChecked();
    }

    CNode Put(const CNode& left, EComparison comparison, const CNode& right) {
        if (!Is<SColumnOperand>(left) || !Is<SLiteral>(right))
            return SNothing();
        const std::size_t column = std::get<SColumnOperand>(left).column;
        const auto& literal = std::get<SLiteral>(right);
        if (FactsOf(m_scope[column].type).valueClass != literal.kind)
            return SNothing();
        m_conditions.push_back({column, comparison, literal.text, literal.number});
        return SChecked();
    }

    CQueryTokens m_tokens;
    const CColumnScope& m_scope;
    std::vector<CQueryConditions::SCondition>& m_conditions;
};

double NumberOf(const DECIMAL& value) {
    constexpr double low = 18446744073709551616.0; // 2^64
    double number = static_cast<double>(value.Hi32) * low + static_cast<double>(value.Lo64);
    double divisor = 1;
    for (int i = 0; i < value.scale; ++i)
        divisor *= 10;
    number /= divisor;
    return value.sign != 0 ? -number : number;
}

double NumberOf(const VARIANT& value) {
    constexpr double currencyUnits = 10000;
    switch (value.vt) {
    case VT_BOOL:
        return value.boolVal;
    case VT_UI1:
        return value.bVal;
    case VT_I2:
        return value.iVal;
    case VT_I4:
        return value.lVal;
    case VT_I8:
        return static_cast<double>(value.llVal);
    case VT_CY:
        return static_cast<double>(value.cyVal) / currencyUnits;
    case VT_R4:
        return static_cast<double>(value.fltVal);
    case VT_DATE:
        return SecondsOfDate(value.date);
    case VT_DECIMAL:
        return NumberOf(value.decVal);
    default:
        return value.vt == VT_R8 ? value.dblVal : 0;
    }
}

bool Holds(const CQueryConditions::SCondition& condition, const VARIANT& value) {
    if (condition.comparison == EComparison::IsNull || value.vt == VT_NULL)
        return condition.comparison == EComparison::IsNull && value.vt == VT_NULL;
    if (condition.comparison == EComparison::IsNotNull)
        return true;
    std::partial_ordering order = std::partial_ordering::equivalent;
    if (value.vt == VT_BSTR)
        order = SCNameOrder::Compare(BstrView(value.bstrVal), condition.text) <=> 0;
    else
        order = NumberOf(value) <=> condition.number;
    switch (condition.comparison) {
    case EComparison::Equal:
        return std::is_eq(order);
    case EComparison::NotEqual:
        return std::is_neq(order);
    case EComparison::Less:
        return std::is_lt(order);
    case EComparison::LessOrEqual:
        return std::is_lteq(order);
    case EComparison::Greater:
        return std::is_gt(order);
    default:
        return std::is_gteq(order);
    }
}

} // namespace

bool CColumnScope::IsTable(std::u16string_view name) const {
    return std::ranges::any_of(
        m_tables, [name](const std::u16string& table) { return SCNameOrder::Compare(table, name) == 0; });
}

std::optional<std::size_t> CColumnScope::Find(std::u16string_view name) const {
    const auto found = std::ranges::find_if(
        m_columns, [name](const SColumn& column) { return SCNameOrder::Compare(column.name, name) == 0; });
    return found == m_columns.end() ? std::nullopt
                                    : std::optional(static_cast<std::size_t>(found - m_columns.begin()));
}

std::optional<CQueryConditions> CQueryConditions::Parse(std::u16string_view text, const CColumnScope& scope) {
    CQueryConditions conditions;
    if (!CConditionParser(text, scope, conditions.m_conditions).Parse())
        return std::nullopt;
    return conditions;
}

bool CQueryConditions::Hold(IRowSource& rows) const {
    return std::ranges::all_of(m_conditions, [&rows](const SCondition& condition) {
        return Holds(condition, rows.GetValue(condition.column));
    });
}

} // namespace NSTQ::Providers
