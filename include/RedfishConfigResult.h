#pragma once

#include <string>

#include "Export.h"

/// The outcome of every operation: a code, a text for the user and the name of
/// the setting that failed. Codes and their standard texts stand in
/// ResultMessageTable. A "bare" result has a code and two empty texts.
///
/// A plain value: copied, assigned and collected freely. Not synchronised; one
/// object belongs to one thread at a time.
class TAVRINE_EXPORT RedfishConfigResult
{
  public:
    /// Keeps exactly what it is given; an empty message stays empty.
    RedfishConfigResult(int code, const std::string& message, std::string setting);
    RedfishConfigResult(const RedfishConfigResult&) = default;
    RedfishConfigResult& operator=(const RedfishConfigResult&) = default;

    /// Makes this a bare result: message and setting become empty.
    RedfishConfigResult& operator=(const int& code);

    bool operator==(int code) const;
    bool operator!=(int code) const;
    operator int() const; // NOLINT(google-explicit-constructor): codes are streamed and compared as numbers

    int ErrorCode() const;
    std::string ErrorMsg();
    std::string ErrorSetting();
    void SetErrorMsg(const std::string& message);

  private:
    int m_Code;
    std::string m_Message;
    std::string m_Setting;
};
