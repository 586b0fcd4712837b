// The value logging kernels: each sends its value as text to the host's log and passes it on.
#include "kernels.h"
#include "ports.h"

#include "nodus/runtime/LocalServiceTable.h"

#include <cstdio>

using namespace nodusmath;
using nodus::runtime::LogService;

namespace {

// Longer messages are cut: 511 characters and a NUL.
constexpr std::size_t kMessageSize = 512;

LogService* logService() noexcept
{
    auto const* const services = nodus::runtime::GetLocalServiceTable();
    return services != nullptr ? services->log : nullptr;
}

char const* textOf(String const& text) noexcept
{
    return static_cast<std::string const&>(text).c_str();
}

// The message is the prefix and the values; only a format's %s for the prefix is common to all.
template <typename... Values>
void send(LogService& log, char const* format, String const& prefix, Values... values) noexcept
{
    char message[kMessageSize];
    std::snprintf(message, sizeof message, format, textOf(prefix), values...);
    log.message(message);
}

// As the formats take it. A NaN that was computed has the sign that the processor gives it, and
// "-nan" would be told on one and "nan" on another: a portable build tells "nan".
double told(Float value) noexcept
{
#ifdef NODUSMATH_PORTABLE
    if (value != value)
        return __builtin_nan("");
#endif
    return value;
}

void format(LogService& log, String const& prefix, Bool value) noexcept
{
    send(log, "%s%s", prefix, value.byte != 0 ? "true" : "false");
}
void format(LogService& log, String const& prefix, Int32 value) noexcept
{
    send(log, "%s%d", prefix, value);
}
void format(LogService& log, String const& prefix, UInt32 value) noexcept
{
    send(log, "%s%u", prefix, value);
}
void format(LogService& log, String const& prefix, Float value) noexcept
{
    send(log, "%s%f", prefix, told(value));
}
void format(LogService& log, String const& prefix, Float2 const& v) noexcept
{
    send(log, "%s(%f,%f)", prefix, told(v.x), told(v.y));
}
void format(LogService& log, String const& prefix, Float3 const& v) noexcept
{
    send(log, "%s(%f,%f,%f)", prefix, told(v.x), told(v.y), told(v.z));
}
void format(LogService& log, String const& prefix, Float4 const& v) noexcept
{
    send(log, "%s(%f,%f,%f,%f)", prefix, told(v.x), told(v.y), told(v.z), told(v.w));
}
void format(LogService& log, String const& prefix, TQS const& v) noexcept
{
    send(log, "%sTQS = [ ( %f, %f, %f, %f ) ( %f, %f, %f, %f ) ( %f, %f, %f, %f ) ]", prefix,
         told(v.t.x), told(v.t.y), told(v.t.z), told(v.t.w), told(v.q.x), told(v.q.y), told(v.q.z),
         told(v.q.w), told(v.s.x), told(v.s.y), told(v.s.z), told(v.s.w));
}

template <typename T> T logValue(T const& value, String const& prefix) noexcept
{
    if (LogService* const log = logService())
        format(*log, prefix, value);
    return value;
}

// The result shares the string of value; what it shared before is released.
void logString(String const& value, String const& prefix, String& result) noexcept
{
    if (LogService* const log = logService())
        send(*log, "%s%s", prefix, textOf(value));
    result = value;
}

}  // namespace

void NodusLogValueBool_Solve(void const* in, void* out) noexcept { solve<logValue<Bool>>(in, out); }
void NodusLogValueString_Solve(void const* in, void* out) noexcept { solve<logString>(in, out); }
void NodusLogValueFloat_Solve(void const* in, void* out) noexcept
{
    solve<logValue<Float>>(in, out);
}
void NodusLogValueFloat2_Solve(void const* in, void* out) noexcept
{
    solve<logValue<Float2>>(in, out);
}
void NodusLogValueFloat3_Solve(void const* in, void* out) noexcept
{
    solve<logValue<Float3>>(in, out);
}
void NodusLogValueFloat4_Solve(void const* in, void* out) noexcept
{
    solve<logValue<Float4>>(in, out);
}
void NodusLogValueInt32_Solve(void const* in, void* out) noexcept
{
    solve<logValue<Int32>>(in, out);
}
void NodusLogValueUInt32_Solve(void const* in, void* out) noexcept
{
    solve<logValue<UInt32>>(in, out);
}
void NodusLogValueTQS_Solve(void const* in, void* out) noexcept { solve<logValue<TQS>>(in, out); }
