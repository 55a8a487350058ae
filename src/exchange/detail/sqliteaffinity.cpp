#include "sqliteaffinity.h"

#include "digits.h"
#include "lettercase.h"
#include "misfit.h"

#include <kd_lib/blanks.h>

#include <cmath>
#include <string>

namespace kd_lib::exchange::detail {

namespace {

constexpr const char* textWouldChange = "the column would change the text to another number";

/// Whether SQLite treats a text as a number, which may have blanks around it, a sign, decimals and an exponent.
bool looksLikeNumber(std::string_view text)
{
    text = allTrimView(text);
    text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
    std::size_t digits = takeDigits(text).size();
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        digits += takeDigits(text).size();
    }
    if (digits > 0 && (text.starts_with('e') || text.starts_with('E'))) {
        text.remove_prefix(1);
        text.remove_prefix(text.starts_with('-') || text.starts_with('+') ? 1 : 0);
        takeDigits(text);
    }
    return digits > 0 && text.empty();
}

/// Whether a number is written as SQLite writes it, so that the text is preserved.
bool isPlainNumber(std::string_view text)
{
    text.remove_prefix(text.starts_with('-') ? 1 : 0);
    const std::size_t point = text.find('.');
    const std::string_view whole = text.substr(0, point);
    if (!isDigits(whole) || (whole.size() > 1 && whole.front() == '0')) {
        return false;
    }
    if (point == std::string_view::npos) {
        return true;
    }
    const std::string_view decimals = text.substr(point + 1);
    return isDigits(decimals) && (decimals == "0" || decimals.back() != '0');
}

bool isKept(Affinity affinity, std::string_view digits)
{
    const bool whole = digits.find('.') == std::string_view::npos;
    return (whole && affinity == Affinity::Numeric && fits<std::int64_t>(digits)) || isExactAsDouble(digits);
}

/// Texts that look like numbers are preserved if they are plain, kept whole, and in the column's own form.
bool isKeptAsText(Affinity affinity, std::string_view text)
{
    if (!looksLikeNumber(text)) {
        return true;
    }
    const bool whole = text.find('.') == std::string_view::npos;
    const bool ownForm = affinity == Affinity::Real ? !whole : whole || !text.ends_with(".0");
    return isPlainNumber(text) && text != "-0" && ownForm && isKept(affinity, text);
}

}  // namespace

Affinity affinityOf(std::string_view declaredType)
{
    const std::string type = uppered(declaredType);
    const auto holds = [&type](const char* word) { return type.find(word) != std::string::npos; };
    if (holds("INT")) {
        return Affinity::Numeric;
    }
    if (holds("CHAR") || holds("CLOB") || holds("TEXT")) {
        return Affinity::Text;
    }
    if (type.empty() || holds("BLOB")) {
        return Affinity::None;
    }
    return holds("REAL") || holds("FLOA") || holds("DOUB") ? Affinity::Real : Affinity::Numeric;
}

const char* reasonAgainst(Affinity affinity, const Cell& cell)
{
    if (cell.Kind == CellKind::Float) {
        return std::isnan(cell.Float) ? misfit::noNan : nullptr;
    }
    if (affinity == Affinity::None || affinity == Affinity::Text) {
        return nullptr;
    }
    if (cell.Kind == CellKind::Number) {
        return isKept(affinity, cell.Text) ? nullptr : misfit::tooManyDigits;
    }
    return cell.Kind != CellKind::Text || isKeptAsText(affinity, cell.Text) ? nullptr : textWouldChange;
}

}  // namespace kd_lib::exchange::detail
