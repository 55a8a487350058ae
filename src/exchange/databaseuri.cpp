#include <kd_lib/exchange/databaseuri.h>

#include <kd_lib/exchange/error.h>
#include <kd_lib/text.h>

#include <algorithm>
#include <charconv>

namespace kd_lib::exchange {

namespace {

constexpr std::string_view schemeEnd = "://";

/// The authority and the parts after it.
struct Pieces {
    std::string_view Credentials;  // before the last "@" of the authority
    std::string_view Authority;    // host and port
    std::string_view Path;         // without its "/"
    std::string_view Query;        // without its "?"
};

Pieces cut(std::string_view uri)
{
    Pieces pieces;
    uri.remove_prefix(std::min(uri.find(schemeEnd) + schemeEnd.size(), uri.size()));
    if (const std::size_t query = uri.find('?'); query != std::string_view::npos) {
        pieces.Query = uri.substr(query + 1);
        uri = uri.substr(0, query);
    }
    // A password may contain an unescaped "/" or "@": the last "@" ends the credentials.
    if (const std::size_t at = uri.rfind('@'); at != std::string_view::npos) {
        pieces.Credentials = uri.substr(0, at);
        uri.remove_prefix(at + 1);
    }
    const std::size_t slash = uri.find('/');
    pieces.Authority = uri.substr(0, slash);
    pieces.Path = slash == std::string_view::npos ? std::string_view() : uri.substr(slash + 1);
    return pieces;
}

int hexDigit(char c)
{
    const char* digits = "0123456789abcdef";
    const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    const char* found = std::find(digits, digits + 16, lower);
    return found == digits + 16 ? -1 : static_cast<int>(found - digits);
}

class Parser {
public:
    explicit Parser(std::string_view uri) : Uri(uri) {}

    DatabaseUri parse() const
    {
        const Pieces pieces = cut(Uri);
        DatabaseUri result;
        const std::size_t colon = pieces.Credentials.find(':');
        result.User = decoded(pieces.Credentials.substr(0, colon), "user");
        if (colon != std::string_view::npos) {
            result.Password = decoded(pieces.Credentials.substr(colon + 1), "password");
        }
        readAuthority(pieces.Authority, result);
        result.Database = decoded(pieces.Path, "database");
        readOptions(pieces.Query, result);
        return result;
    }

private:
    [[noreturn]] void fail(const std::string& reason) const { throw OptionError(withoutPassword(Uri), reason); }

    std::string decoded(std::string_view text, const char* what) const
    {
        std::string result;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '%') {
                result += text[i];
                continue;
            }
            const int high = i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
            const int low = i + 2 < text.size() ? hexDigit(text[i + 2]) : -1;
            if (high < 0 || low < 0 || high + low == 0) {
                fail(std::string("the ") + what + " has a '%' without the two digits of a byte");
            }
            result += static_cast<char>(high * 16 + low);
            i += 2;
        }
        return result;
    }

    void readAuthority(std::string_view authority, DatabaseUri& result) const
    {
        std::size_t colon = authority.find(':');
        if (authority.starts_with('[')) {
            const std::size_t end = authority.find(']');
            if (end == std::string_view::npos) {
                fail("the host's '[' has no ']'");
            }
            result.Host = std::string(authority.substr(1, end - 1));
            authority.remove_prefix(end + 1);
        } else {
            result.Host = decoded(authority.substr(0, colon), "host");
            authority.remove_prefix(std::min(colon, authority.size()));
        }
        if (authority.empty()) {
            return;
        }
        const std::string_view digits = authority.substr(1);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), result.Port);
        if (authority.front() != ':' || error != std::errc() || end != digits.data() + digits.size()) {
            fail("the port is not a number up to 65535");
        }
    }

    void readOptions(std::string_view query, DatabaseUri& result) const
    {
        while (!query.empty()) {
            const std::string_view option = query.substr(0, query.find('&'));
            query.remove_prefix(std::min(option.size() + 1, query.size()));
            const std::size_t equals = option.find('=');
            if (equals == std::string_view::npos) {
                fail("an option lacks its '='");
            }
            result.Options.emplace_back(decoded(option.substr(0, equals), "name of an option"),
                                        decoded(option.substr(equals + 1), "value of an option"));
        }
    }

    std::string_view Uri;
};

}  // namespace

DatabaseKind databaseKind(std::string_view name)
{
    const std::size_t end = name.find(schemeEnd);
    const std::string scheme = end == std::string_view::npos ? "" : stringToLower(std::string(name.substr(0, end)));
    if (scheme == "postgresql" || scheme == "postgres") {
        return DatabaseKind::PostgreSql;
    }
    return scheme == "mariadb" || scheme == "mysql" ? DatabaseKind::MariaDb : DatabaseKind::Sqlite;
}

std::string withoutPassword(std::string_view name)
{
    if (databaseKind(name) == DatabaseKind::Sqlite) {
        return std::string(name);
    }
    const Pieces pieces = cut(name);
    std::string result(name.substr(0, name.find(schemeEnd) + schemeEnd.size()));
    // With an "@" there, the "?" was part of a password, so no part was split correctly.
    if (pieces.Query.find('@') != std::string_view::npos) {
        return result + "...";
    }
    if (!pieces.Credentials.empty()) {
        result.append(pieces.Credentials.substr(0, pieces.Credentials.find(':'))).append("@");
    }
    // If the host was forgotten, a password follows the colon.
    const std::size_t colon = pieces.Authority.rfind(':');
    const bool port = colon != std::string_view::npos &&
                      pieces.Authority.find_first_not_of("0123456789", colon + 1) == std::string_view::npos;
    result.append(port || pieces.Authority.ends_with(']') ? pieces.Authority : pieces.Authority.substr(0, colon));
    if (!pieces.Path.empty()) {
        result.append("/").append(pieces.Path);
    }
    return result;
}

DatabaseUri DatabaseUri::parse(std::string_view uri)
{
    return Parser(uri).parse();
}

}  // namespace kd_lib::exchange
