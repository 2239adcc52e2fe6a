#include <du/Localizer.h>
#include <du/MessageCatalog.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

namespace du
{

namespace
{

void ReplaceArgument(std::string& message, std::string_view argument)
{
    constexpr std::string_view kPlace = "%1";
    std::size_t place = message.find(kPlace);
    if (place == std::string::npos) {
        return;
    }
    std::string replaced;
    std::size_t done = 0;
    for (; place != std::string::npos; place = message.find(kPlace, done)) {
        replaced.append(message, done, place - done).append(argument);
        done = place + kPlace.size();
    }
    replaced.append(message, done);
    message = std::move(replaced);
}

} // namespace

std::string Localizer::LocalizeMessage(std::string_view key) const
{
    std::string message;
    if (!MessageCatalog::Find(m_tableName.GetText(), key, message)) {
        message = key;
    }
    return message;
}

std::string Localizer::LocalizeMessage(std::string_view key, const char* format, ...) const
{
    std::string message;
    if (!MessageCatalog::Find(m_tableName.GetText(), key, message)) {
        return std::string(key);
    }
    std::array<char, 1024> buffer;
    std::va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, values);
    va_end(values);
    const auto size = std::min(static_cast<std::size_t>(std::max(length, 0)), buffer.size() - 1);
    ReplaceArgument(message, std::string_view(buffer.data(), size));
    return message;
}

} // namespace du
