#include "generator.h"

#include <array>
#include <cstdio>
#include <span>
#include <stdexcept>

namespace kd_bench {

namespace {

using Words = std::span<const char* const>;

constexpr const char* surnames[] = {"Abel",    "Brandt",   "Castellano", "Dvorak",       "Eriksen",   "Fontaine",
                                    "Grzybek", "Haugland", "Ito",        "Jovanovic",    "Kowalczyk", "Lindqvist",
                                    "Moreau",  "Nakamura", "Oyelaran",   "Papadopoulos", "Quist",     "Rossi",
                                    "Schwarz", "Tanaka",   "Ueda",       "Vermeulen",    "Wu",        "Zimmermann"};
constexpr const char* names[] = {"Agnes", "Bo",  "Carla", "Dimitri", "Eun-ji", "Fatima", "Giulia", "Hans",
                                 "Ines",  "Jan", "Kofi",  "Leonard", "Maud",   "Nils",   "Olga",   "Pierre"};
constexpr const char* streets[] = {"Rue de la Gare", "Bahnhofstrasse", "Canal Walk", "Via Roma",
                                   "Church Lane",    "Storgatan",      "Harbour Rd", "Long Acre"};
constexpr const char* towns[] = {"Aarhus", "Bergen",  "Cork",  "Delft",  "Esslingen", "Frederikshavn",
                                 "Ghent",  "Haarlem", "Jena",  "Kaunas", "Linz",      "Montpellier",
                                 "Nantes", "Oulu",    "Porto", "Reims"};
constexpr const char* countries[] = {"AT", "BE", "CH", "DE", "DK", "ES", "FI", "FR",
                                     "GB", "IE", "IT", "LT", "NL", "NO", "PT", "SE"};
constexpr std::string_view flags = "TTTTTFFFFFYYNN ?";

constexpr std::uint64_t deletedOf = 100;
constexpr std::uint64_t emptyOf = 128;
constexpr std::size_t wideColumns = 60;

Words wordsOf(Filling filling)
{
    switch (filling) {
    case Filling::Surname:
        return surnames;
    case Filling::Name:
        return names;
    case Filling::Address:
        return streets;
    case Filling::Country:
        return countries;
    default:
        return towns;
    }
}

/// Scatters the bits of a counter (the finaliser known as splitmix64).
std::uint64_t scatter(std::uint64_t x)
{
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return x ^ (x >> 31);
}

std::string digits(std::uint64_t number, std::size_t width)
{
    std::string text = std::to_string(number);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

std::uint64_t powerOfTen(std::size_t exponent)
{
    std::uint64_t power = 1;
    for (std::size_t i = 0; i < exponent; ++i) {
        power *= 10;
    }
    return power;
}

std::vector<Column> peopleColumns()
{
    return {{"NUMBER", 'N', 8, 0, Filling::Serial},   {"SURNAME", 'C', 18, 0, Filling::Surname},
            {"NAME", 'C', 12, 0, Filling::Name},      {"ADDRESS", 'C', 26, 0, Filling::Address},
            {"TOWN", 'C', 16, 0, Filling::Town},      {"COUNTRY", 'C', 2, 0, Filling::Country},
            {"POSTCODE", 'C', 6, 0, Filling::Digits}, {"BORN", 'D', 8, 0, Filling::Date},
            {"MEMBER", 'L', 1, 0, Filling::Flag},     {"BALANCE", 'N', 11, 2, Filling::Number},
            {"RATING", 'F', 8, 3, Filling::Number},   {"VISITS", 'N', 5, 0, Filling::Number}};
}

/// Twelve groups of five.
std::vector<Column> manyColumns()
{
    const std::array<Column, 5> group = {{{"TEXT", 'C', 14, 0, Filling::Town},
                                          {"AMOUNT", 'N', 10, 2, Filling::Number},
                                          {"DAY", 'D', 8, 0, Filling::Date},
                                          {"CODE", 'C', 9, 0, Filling::Surname},
                                          {"FLAG", 'L', 1, 0, Filling::Flag}}};
    std::vector<Column> columns;
    for (std::size_t i = 0; i < wideColumns; ++i) {
        columns.push_back(group[i % group.size()]);
        columns.back().Name += digits(i / group.size() + 1, 2);
    }
    return columns;
}

}  // namespace

Profile profileNamed(std::string_view name)
{
    if (name == "short") {
        return Profile::Short;
    }
    if (name == "wide") {
        return Profile::Wide;
    }
    if (name == "quoted") {
        return Profile::Quoted;
    }
    throw std::invalid_argument("no profile " + std::string(name) + "; there are short, wide, quoted");
}

std::vector<Column> columnsOf(Profile profile)
{
    return profile == Profile::Wide ? manyColumns() : peopleColumns();
}

RecordGenerator::RecordGenerator(Profile profile, std::uint64_t seed)
    : Quotes(profile == Profile::Quoted), Columns(columnsOf(profile)), Seed(scatter(seed)), Values(Columns.size())
{
}

std::uint64_t RecordGenerator::draw()
{
    State += 0x9E3779B97F4A7C15U;
    return scatter(State);
}

void RecordGenerator::next()
{
    ++Serial;
    State = scatter(Seed + Serial);
    Deleted = below(deletedOf) == 0;
    for (std::size_t i = 0; i < Columns.size(); ++i) {
        Values[i] = valueOf(Columns[i]);
    }
}

std::string RecordGenerator::valueOf(const Column& column)
{
    switch (column.Values) {
    case Filling::Serial:
        return std::to_string(Serial);
    case Filling::Date:
        return below(emptyOf) == 0 ? "" : date();
    case Filling::Flag: {
        const char flag = flags[below(flags.size())];
        return flag == ' ' ? "" : std::string(1, flag);
    }
    case Filling::Number:
        return below(emptyOf) == 0 ? "" : numberOf(column);
    case Filling::Digits:
        return digits(below(powerOfTen(column.Width)), column.Width);
    default:
        return textOf(column);
    }
}

std::string RecordGenerator::textOf(const Column& column)
{
    const Words words = wordsOf(column.Values);
    std::string text = words[below(words.size())];
    if (column.Values == Filling::Address) {
        text += ' ' + std::to_string(1 + below(2000));
    }
    if (Quotes && column.Values != Filling::Country) {
        text = withQuotes(text);
    }
    return text.substr(0, column.Width);
}

std::string RecordGenerator::date()
{
    // One draw per statement: the compiler chooses the order within an expression.
    std::string text = digits(1940 + below(80), 4);
    text += digits(1 + below(12), 2);
    text += digits(1 + below(28), 2);
    return text;
}

std::string RecordGenerator::numberOf(const Column& column)
{
    const auto decimals = static_cast<std::size_t>(column.Decimals);
    const std::size_t wholes = column.Width - decimals - (decimals > 0 ? 2 : 1);
    std::string text = below(8) == 0 ? "-" : "";
    text += std::to_string(below(powerOfTen(1 + below(wholes))));
    return decimals > 0 ? text + '.' + digits(below(powerOfTen(decimals)), decimals) : text;
}

std::string RecordGenerator::withQuotes(std::string text)
{
    switch (below(4)) {
    case 0:
        return "O'" + text;
    case 1:
        return '"' + text + '"';
    case 2:
        return text + "'s";
    default:
        return text;
    }
}

}  // namespace kd_bench
