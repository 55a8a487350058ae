#include "mariadbopen.h"

#include <kd_lib/exchange/databaseuri.h>
#include <kd_lib/exchange/error.h>
#include <kd_lib/text.h>

#include <algorithm>
#include <charconv>
#include <mutex>

namespace kd_lib::detail {

namespace {

constexpr const char* characterSet = "utf8mb4";
constexpr const char* optionGroup = "kd_db";
constexpr int refusedFile = 2000;  // the number for errors without one

enum class OptionForm { Text, Switch, Number, Socket };

struct Option {
    const char* Name;
    OptionForm Form;
    mysql_option Meaning;
};

constexpr Option knownOptions[] = {
    {"connect-timeout", OptionForm::Number, MYSQL_OPT_CONNECT_TIMEOUT},
    {"socket", OptionForm::Socket, {}},
    {"ssl", OptionForm::Switch, MYSQL_OPT_SSL_ENFORCE},
    {"ssl-ca", OptionForm::Text, MYSQL_OPT_SSL_CA},
    {"ssl-capath", OptionForm::Text, MYSQL_OPT_SSL_CAPATH},
    {"ssl-cert", OptionForm::Text, MYSQL_OPT_SSL_CERT},
    {"ssl-cipher", OptionForm::Text, MYSQL_OPT_SSL_CIPHER},
    {"ssl-crl", OptionForm::Text, MYSQL_OPT_SSL_CRL},
    {"ssl-key", OptionForm::Text, MYSQL_OPT_SSL_KEY},
    {"ssl-verify-server-cert", OptionForm::Switch, MYSQL_OPT_SSL_VERIFY_SERVER_CERT},
};

const Option* optionOf(const std::string& name)
{
    const auto* found = std::find_if(std::begin(knownOptions), std::end(knownOptions),
                                     [&name](const Option& option) { return name == option.Name; });
    return found == std::end(knownOptions) ? nullptr : found;
}

void setSwitch(MYSQL* handle, mysql_option meaning, bool on)
{
    const my_bool value = on ? 1 : 0;
    mysql_optionsv(handle, meaning, &value);
}

/// Sets one option. Each TLS option also requires TLS, so that no connection is made without it.
void set(MYSQL* handle, const std::string& name, const std::string& value)
{
    const Option& option = *optionOf(name);
    if (name.starts_with("ssl-")) {
        setSwitch(handle, MYSQL_OPT_SSL_ENFORCE, true);
    }
    if (name == "ssl-ca" || name == "ssl-capath") {
        setSwitch(handle, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, true);
    }
    if (option.Form == OptionForm::Switch) {
        setSwitch(handle, option.Meaning, stringToBool(value));
    } else if (option.Form == OptionForm::Text) {
        mysql_optionsv(handle, option.Meaning, value.c_str());
    } else if (option.Form == OptionForm::Number) {
        unsigned int number = 0;
        std::from_chars(value.data(), value.data() + value.size(), number);
        mysql_optionsv(handle, option.Meaning, &number);
    }
}

/// Whether the options require TLS.
bool requiresTls(const MariadbSettings& settings)
{
    return std::ranges::any_of(settings.Options, [](const auto& option) {
        return option.first.starts_with("ssl-") || (option.first == "ssl" && stringToBool(option.second));
    });
}

const char* orNull(const std::string& text)
{
    return text.empty() ? nullptr : text.c_str();
}

/// Refuses to send a file: a server may request any file of this machine, whatever file the statement names.
int refuseFile(void** state, const char*, void*)
{
    *state = nullptr;
    return 1;
}

int readNothing(void*, char*, unsigned int)
{
    return -1;
}

void endFile(void*) {}

int sayRefused(void*, char* text, unsigned int size)
{
    const std::string reason = "no file is sent to the server";
    text[reason.copy(text, size - 1)] = '\0';
    return refusedFile;
}

}  // namespace

std::string mariadbReason(const char* text, unsigned int number)
{
    return allTrim(replaceChar(text, '\n', ' ')) + " [#" + std::to_string(number) + "]";
}

MariadbSettings MariadbSettings::of(const std::string& uri)
{
    exchange::DatabaseUri parts = exchange::DatabaseUri::parse(uri);
    for (const auto& [name, value] : parts.Options) {
        const Option* option = optionOf(name);
        if (option == nullptr) {
            throw exchange::OptionError(exchange::withoutPassword(uri), "the option '" + name + "' is not known");
        }
        if (option->Form == OptionForm::Socket) {
            parts.Host = value;
        }
    }
    return {parts.Host, parts.Port, parts.User, parts.Password, parts.Database, parts.Options};
}

Mysql openMariadb(const MariadbSettings& settings, std::string& reason)
{
    static std::once_flag once;
    std::call_once(once, [] { mysql_library_init(0, nullptr, nullptr); });
    Mysql handle(mysql_init(nullptr));
    if (!handle) {
        reason = "out of memory";
        return nullptr;
    }
    mysql_optionsv(handle.get(), MYSQL_READ_DEFAULT_GROUP, optionGroup);
    mysql_optionsv(handle.get(), MYSQL_SET_CHARSET_NAME, characterSet);
    for (const auto& [name, value] : settings.Options) {
        set(handle.get(), name, value);
    }
    const bool socket = settings.Host.starts_with('/');
    // libmariadb frees the handle's settings after a failure, but not the handle.
    if (mysql_real_connect(handle.get(), socket ? nullptr : orNull(settings.Host), orNull(settings.User),
                           orNull(settings.Password), orNull(settings.Database), settings.Port,
                           socket ? settings.Host.c_str() : nullptr,
                           CLIENT_FOUND_ROWS | CLIENT_MULTI_RESULTS) == nullptr ||
        // An option file may have set another character set.
        mysql_set_character_set(handle.get(), characterSet) != 0) {
        reason = mariadbReason(mysql_error(handle.get()), mysql_errno(handle.get()));
        return nullptr;
    }
    // libmariadb continues without TLS if the server has none, although the option to enforce it is set.
    if (requiresTls(settings) && mysql_get_ssl_cipher(handle.get()) == nullptr) {
        reason = "the server does not offer TLS, which the URI requires";
        return nullptr;
    }
    mysql_set_local_infile_handler(handle.get(), refuseFile, readNothing, endFile, sayRefused, nullptr);
    return handle;
}

}  // namespace kd_lib::detail
