// Writes a record from the destructor of a static object that is older than all
// of the logger's state, and after this thread's own objects are gone.

#include "Log.h"
#include "Logging.h"

#include <cstdio>
#include <cstdlib>

namespace
{

struct LogsWhenDestroyed
{
    ~LogsWhenDestroyed() { Tavrine::Log(1, "LogAtExit.cpp", __LINE__).Stream() << "from the destructor"; }
};

const LogsWhenDestroyed g_Last;

} // namespace

int main()
{
    Tavrine::Logging::AddSink(4, [](const Tavrine::LogRecord& record)
                              { std::printf("[%s] %s\n", record.Context.c_str(), record.Text.c_str()); });
    const Tavrine::LogContext context("main");
    Tavrine::Log(1, "LogAtExit.cpp", __LINE__).Stream() << "from main";
    return 0;
}
