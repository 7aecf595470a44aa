#pragma once

#include "Headset/JsonTree.h"

#include <array>
#include <optional>
#include <vector>

namespace qltkit
{

struct Range
{
    double least;
    double most;
};

/// Reads the fields of one JSON object by name and checks them. Errors contain the file, the line
/// and the field.
class JsonFields
{
public:
    /// `path` is the object's place in the text, for example "events[3]"; it is empty for the whole
    /// text. `object` and `file` must outlive this reader. Throws Error when `object` is no object.
    JsonFields(const JsonValue& object, std::string path, const std::string& file);

    /// Returns null when the field is missing.
    const JsonValue* Find(const std::string& field);

    bool Has(const std::string& field) { return Find(field) != nullptr; }

    /// The operations below throw Error when the field is missing, of another kind or out of range.
    double Number(const std::string& field, Range range);
    std::int64_t Whole(const std::string& field, Range range);
    std::string Text(const std::string& field);
    JsonFields Object(const std::string& field);
    const std::vector<JsonValue::Member>& List(const std::string& field);
    std::array<double, 3> Vector(const std::string& field, Range range);

    /// The index of the field's text in `choices`.
    std::size_t Choice(const std::string& field, const std::vector<std::string>& choices);

    /// Any integer from 0 to 2^64 - 1.
    std::uint64_t Count(const std::string& field);

    /// Returns `fallback` when the field is missing.
    double Number(const std::string& field, Range range, double fallback);

    /// An object in the list of `field`.
    JsonFields Item(const std::string& field, std::size_t index);

    /// Throws Error when the object has a field that no call has read.
    void RefuseOthers() const;

    [[noreturn]] void Fail(const std::string& field, const std::string& text) const;

private:
    const JsonValue& Need(const std::string& field);
    std::string PathOf(const std::string& field) const;
    [[noreturn]] void FailAt(const JsonValue& value, const std::string& path,
                             const std::string& text) const;
    double NumberIn(const JsonValue& value, const std::string& path, Range range) const;

    const JsonValue& mObject;
    const std::string mPath;
    const std::string& mFile;
    std::vector<std::string> mAsked;
};

} // namespace qltkit
