// The checks and copies that every function performs on the structures and arrays of a program.
#pragma once

#include "State/Failure.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace qltxr
{

inline void RequirePointer(const void* pointer)
{
    Require(pointer != nullptr, XR_ERROR_VALIDATION_FAILURE);
}

/// Checks the type of a structure that must not be null.
template <typename Structure>
void RequireType(const Structure* structure, XrStructureType type)
{
    Require(structure != nullptr && structure->type == type, XR_ERROR_VALIDATION_FAILURE);
}

/// Checks the type of a structure that may be null.
template <typename Structure>
void RequireTypeIfAny(const Structure* structure, XrStructureType type)
{
    Require(structure == nullptr || structure->type == type, XR_ERROR_VALIDATION_FAILURE);
}

/// Returns the first structure of this type in a chain, or null.
template <typename Structure>
const Structure* FindInChain(const void* chain, XrStructureType type)
{
    auto* next = static_cast<const XrBaseInStructure*>(chain);
    while (next != nullptr && next->type != type)
    {
        next = next->next;
    }
    return reinterpret_cast<const Structure*>(next);
}

template <typename Structure>
Structure* FindInOutChain(void* chain, XrStructureType type)
{
    return const_cast<Structure*>(FindInChain<Structure>(chain, type));
}

/// Performs the first half of the two-call idiom: it writes the count. Returns true when the
/// elements must follow.
inline bool AnswerCount(std::uint32_t capacity, std::uint32_t* count, const void* array,
                        std::size_t needed)
{
    RequirePointer(count);
    *count = static_cast<std::uint32_t>(needed);
    if (capacity == 0)
    {
        return false;
    }
    Require(capacity >= needed, XR_ERROR_SIZE_INSUFFICIENT);
    RequirePointer(needed > 0 ? array : count);
    return true;
}

/// Performs the two-call idiom for values without a type.
template <typename Value>
XrResult AnswerValues(std::uint32_t capacity, std::uint32_t* count, Value* array,
                      const Value* values, std::size_t number)
{
    if (AnswerCount(capacity, count, array, number) && number > 0)
    {
        std::memcpy(array, values, number * sizeof(Value));
    }
    return XR_SUCCESS;
}

/// Performs the two-call idiom for a text. Its count includes the terminator.
inline XrResult AnswerText(std::uint32_t capacity, std::uint32_t* count, char* buffer,
                           std::string_view text)
{
    if (AnswerCount(capacity, count, buffer, text.size() + 1))
    {
        std::memcpy(buffer, text.data(), text.size());
        buffer[text.size()] = '\0';
    }
    return XR_SUCCESS;
}

/// Returns the text of a field of fixed size. The view's pointer is null when the field has no
/// terminator.
inline std::string_view FixedText(const char* field, std::size_t size)
{
    const void* end = std::memchr(field, '\0', size);
    return end == nullptr
               ? std::string_view()
               : std::string_view(field,
                                  static_cast<std::size_t>(static_cast<const char*>(end) - field));
}

template <std::size_t SIZE>
void WriteText(char (&field)[SIZE], std::string_view text)
{
    const std::size_t length = text.size() < SIZE - 1 ? text.size() : SIZE - 1;
    std::memcpy(field, text.data(), length);
    field[length] = '\0';
}

} // namespace qltxr
