#include "Headset/JsonFields.h"

#include <qltkit/Error.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

namespace qltkit
{

namespace
{

std::string TextOf(Range range)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(std::numeric_limits<double>::digits10);
    text << "from " << range.least << " to " << range.most;
    return text.str();
}

} // namespace

JsonFields::JsonFields(const JsonValue& object, std::string path, const std::string& file)
    : mObject(object)
    , mPath(std::move(path))
    , mFile(file)
{
    if (mObject.kind != JsonValue::Kind::Object)
    {
        FailAt(mObject, mPath, "must be an object");
    }
}

const JsonValue* JsonFields::Find(const std::string& field)
{
    if (std::find(mAsked.begin(), mAsked.end(), field) == mAsked.end())
    {
        mAsked.push_back(field);
    }
    for (const JsonValue::Member& member : mObject.members)
    {
        if (member.name == field)
        {
            return &member.value;
        }
    }
    return nullptr;
}

const JsonValue& JsonFields::Need(const std::string& field)
{
    const JsonValue* value = Find(field);
    if (value == nullptr)
    {
        FailAt(mObject, PathOf(field), "is missing");
    }
    return *value;
}

double JsonFields::NumberIn(const JsonValue& value, const std::string& path, Range range) const
{
    if (value.kind != JsonValue::Kind::Number || value.number < range.least ||
        value.number > range.most)
    {
        FailAt(value, path, "must be a number " + TextOf(range));
    }
    return value.number;
}

double JsonFields::Number(const std::string& field, Range range)
{
    return NumberIn(Need(field), PathOf(field), range);
}

double JsonFields::Number(const std::string& field, Range range, double fallback)
{
    return Has(field) ? Number(field, range) : fallback;
}

std::int64_t JsonFields::Whole(const std::string& field, Range range)
{
    const double number = Number(field, range);
    if (number != std::floor(number))
    {
        Fail(field, "must be a whole number " + TextOf(range));
    }
    return static_cast<std::int64_t>(number);
}

std::uint64_t JsonFields::Count(const std::string& field)
{
    const JsonValue& value = Need(field);
    if (!value.isCount)
    {
        FailAt(value, PathOf(field), "must be a whole number from 0 to 18446744073709551615");
    }
    return value.count;
}

std::string JsonFields::Text(const std::string& field)
{
    const JsonValue& value = Need(field);
    if (value.kind != JsonValue::Kind::Text)
    {
        FailAt(value, PathOf(field), "must be a text");
    }
    return value.text;
}

JsonFields JsonFields::Object(const std::string& field)
{
    return JsonFields(Need(field), PathOf(field), mFile);
}

const std::vector<JsonValue::Member>& JsonFields::List(const std::string& field)
{
    const JsonValue& value = Need(field);
    if (value.kind != JsonValue::Kind::List)
    {
        FailAt(value, PathOf(field), "must be a list");
    }
    return value.members;
}

std::array<double, 3> JsonFields::Vector(const std::string& field, Range range)
{
    const auto& members = List(field);
    std::array<double, 3> vector{};
    if (members.size() != vector.size())
    {
        Fail(field, "must be a list of three numbers");
    }
    for (std::size_t i = 0; i < vector.size(); ++i)
    {
        const std::string path = PathOf(field) + "[" + std::to_string(i) + "]";
        vector[i] = NumberIn(members[i].value, path, range);
    }
    return vector;
}

std::size_t JsonFields::Choice(const std::string& field, const std::vector<std::string>& choices)
{
    const std::string text = Text(field);
    const auto choice = std::find(choices.begin(), choices.end(), text);
    if (choice == choices.end())
    {
        std::string list;
        for (const std::string& one : choices)
        {
            list += (list.empty() ? "" : ", ") + one;
        }
        Fail(field, "is " + Quoted(text) + " and must be one of: " + list);
    }
    return static_cast<std::size_t>(choice - choices.begin());
}

JsonFields JsonFields::Item(const std::string& field, std::size_t index)
{
    const std::string path = PathOf(field) + "[" + std::to_string(index) + "]";
    return JsonFields(List(field).at(index).value, path, mFile);
}

void JsonFields::RefuseOthers() const
{
    for (const JsonValue::Member& member : mObject.members)
    {
        if (std::find(mAsked.begin(), mAsked.end(), member.name) == mAsked.end())
        {
            const std::string where = mPath.empty() ? "" : mPath + ": ";
            throw Error(mFile + ", line " + std::to_string(member.value.line) + ": " + where +
                        Quoted(member.name) + " is no field here");
        }
    }
}

void JsonFields::Fail(const std::string& field, const std::string& text) const
{
    for (const JsonValue::Member& member : mObject.members)
    {
        if (member.name == field)
        {
            FailAt(member.value, PathOf(field), text);
        }
    }
    FailAt(mObject, PathOf(field), text);
}

std::string JsonFields::PathOf(const std::string& field) const
{
    return mPath.empty() ? field : mPath + "." + field;
}

void JsonFields::FailAt(const JsonValue& value, const std::string& path,
                        const std::string& text) const
{
    throw Error(mFile + ", line " + std::to_string(value.line) + ": " +
                (path.empty() ? "a script" : path) + " " + text);
}

} // namespace qltkit
