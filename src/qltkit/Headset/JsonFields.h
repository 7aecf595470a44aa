// The fields of one JSON object, each asked for by its name and checked. Errors have file, line and
// field.
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

class JsonFields
{
public:
    /// `path` is the object's place, "events[3]"; empty for the whole text. Both must outlive this.
    /// Error when `object` is none.
    JsonFields(const JsonValue& object, std::string path, const std::string& file);

    /// Null when the field is not there.
    const JsonValue* Find(const std::string& field);

    bool Has(const std::string& field) { return Find(field) != nullptr; }

    /// These need the field, of this kind and in this range.
    double Number(const std::string& field, Range range);
    std::int64_t Whole(const std::string& field, Range range);
    std::string Text(const std::string& field);
    JsonFields Object(const std::string& field);
    const std::vector<JsonValue::Member>& List(const std::string& field);
    std::array<double, 3> Vector(const std::string& field, Range range);

    /// The place of the field's text among the choices.
    std::size_t Choice(const std::string& field, const std::vector<std::string>& choices);

    /// Any whole number from 0 to 2^64 - 1.
    std::uint64_t Count(const std::string& field);

    /// Without the field: `fallback`.
    double Number(const std::string& field, Range range, double fallback);

    /// An object of the list in `field`.
    JsonFields Item(const std::string& field, std::size_t index);

    /// Error for any field that nobody has asked for.
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
