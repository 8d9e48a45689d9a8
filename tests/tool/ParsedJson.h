#pragma once

#include <gtest/gtest.h>

#include <string>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

namespace tooltest
{

/// The JSON document that a program has printed; a text that is none fails the test.
inline boost::json::value Parsed(const std::string& text)
{
    boost::json::error_code failure;
    boost::json::value value = boost::json::parse(text, failure);
    EXPECT_FALSE(failure) << failure.message() << ": " << text.substr(0, 200);
    return value;
}

} // namespace tooltest
