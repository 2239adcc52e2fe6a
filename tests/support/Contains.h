#pragma once

#include <gtest/gtest.h>

#include <string_view>

namespace test
{

/// Whether the part stands in the text, both of which are shown when it does not.
inline testing::AssertionResult Contains(std::string_view text, std::string_view part)
{
    if (text.find(part) != std::string_view::npos) {
        return testing::AssertionSuccess() << "\"" << part << "\" stands in:\n" << text;
    }
    return testing::AssertionFailure() << "\"" << part << "\" does not stand in:\n" << text;
}

} // namespace test
