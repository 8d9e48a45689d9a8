#include "RedfishConfigResult.h"

#include <utility>

RedfishConfigResult::RedfishConfigResult(int code, const std::string& message, std::string setting)
    : m_Code(code), m_Message(message), m_Setting(std::move(setting))
{
}

RedfishConfigResult& RedfishConfigResult::operator=(const int& code)
{
    m_Code = code;
    m_Message.clear();
    m_Setting.clear();
    return *this;
}

bool RedfishConfigResult::operator==(int code) const { return m_Code == code; }
bool RedfishConfigResult::operator!=(int code) const { return m_Code != code; }
RedfishConfigResult::operator int() const { return m_Code; }
int RedfishConfigResult::ErrorCode() const { return m_Code; }
std::string RedfishConfigResult::ErrorMsg() { return m_Message; }
std::string RedfishConfigResult::ErrorSetting() { return m_Setting; }
void RedfishConfigResult::SetErrorMsg(const std::string& message) { m_Message = message; }
