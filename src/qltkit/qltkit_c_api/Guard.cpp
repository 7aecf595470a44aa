#include "qltkit_c_api/Guard.h"

#include <qlt/Version.h>
#include <qltkit/Error.h>

#include <exception>
#include <new>
#include <string>

namespace qltkit
{
namespace
{

std::string& LastError()
{
    thread_local std::string text;
    return text;
}

qltkit_Result Fail(qltkit_Result result, const char* text) noexcept
{
    try
    {
        LastError() = text;
    }
    catch (const std::exception&)
    {
        LastError() = "no memory"; // this text is so short that it needs no memory
        return QLTKIT_ERROR_MEMORY;
    }
    return result;
}

} // namespace

qltkit_Result ResultOfException() noexcept
{
    try
    {
        throw;
    }
    catch (const ArgumentError& error)
    {
        return Fail(QLTKIT_ERROR_ARGUMENT, error.text.c_str());
    }
    catch (const std::bad_alloc&)
    {
        return Fail(QLTKIT_ERROR_MEMORY, "there is no memory left");
    }
    catch (const std::exception& error)
    {
        return Fail(QLTKIT_ERROR, error.what());
    }
    catch (...)
    {
        return Fail(QLTKIT_ERROR, "something unknown has failed");
    }
}

} // namespace qltkit

const char* qltkit_version(void) { return QLT_VERSION_STRING; }

const char* qltkit_last_error(void) { return qltkit::LastError().c_str(); }
