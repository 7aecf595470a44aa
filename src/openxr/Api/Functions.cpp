#include "Api/Functions.h"

#include "State/Failure.h"

#include <algorithm>
#include <exception>
#include <new>

namespace qltxr
{

namespace
{

/// Converts an exception of a function into its result code.
template <auto FUNCTION>
struct Guarded;

template <typename... Arguments, XrResult(XRAPI_PTR* FUNCTION)(Arguments...)>
struct Guarded<FUNCTION>
{
    static XRAPI_ATTR XrResult XRAPI_CALL Call(Arguments... arguments) noexcept
    {
        try
        {
            return FUNCTION(arguments...);
        }
        catch (const Failure& failure)
        {
            return failure.result;
        }
        catch (const std::bad_alloc&)
        {
            return XR_ERROR_OUT_OF_MEMORY;
        }
        catch (...)
        {
            return XR_ERROR_RUNTIME_FAILURE;
        }
    }
};

struct Entry
{
    std::string_view name;
    NamedFunction function;
};

// NOLINTBEGIN(bugprone-macro-parentheses): the extension is one field of an initialiser
#define QLT_XR_ENTRY(name, extension)                                                              \
    {"xr" #name, {reinterpret_cast<PFN_xrVoidFunction>(&Guarded<&name>::Call), extension}},
const Entry ENTRIES[] = {QLT_XR_FUNCTIONS(QLT_XR_ENTRY)};
#undef QLT_XR_ENTRY
// NOLINTEND(bugprone-macro-parentheses)

} // namespace

NamedFunction FindFunction(std::string_view name)
{
    const auto* found = std::find_if(std::begin(ENTRIES), std::end(ENTRIES),
                                     [name](const Entry& entry) { return entry.name == name; });
    return found == std::end(ENTRIES) ? NamedFunction() : found->function;
}

} // namespace qltxr
