#pragma once

#include <string>
#include <vector>

#include "host/QelNotification/PlainFields.h"

namespace qel::notification {

/// Reads all fields of one JSON object, including fields that contain objects. A function `read`
/// accepts the fields of an object, must read all of them, and returns a result.
class Fields : public PlainFields {
 public:
  using PlainFields::PlainFields;

  /// The result of `read` for the object in this field.
  template <typename Read>
  auto object(const std::string& name, Read read) {
    return readAll(take(name), name, read);
  }

  /// Like `object`, but the result for null is the default value of its type.
  template <typename Read>
  auto objectOrNull(const std::string& name, Read read) {
    const auto& value = take(name);
    return value.is_null() ? decltype(read(*this)){} : readAll(value, name, read);
  }

  /// The results of `read` for the list of objects in this field.
  template <typename Read>
  auto objects(const std::string& name, Read read) {
    std::vector<decltype(read(*this))> objects;
    for (const auto& element : takeList(name)) {
      objects.push_back(readAll(element, elementName(name, objects.size()), read));
    }
    return objects;
  }

 private:
  template <typename Read>
  auto readAll(const nlohmann::json& value, const std::string& name, Read read) const {
    Fields fields(value, pathOf(name));
    auto result = read(fields);
    fields.expectAllRead();
    return result;
  }
};

}  // namespace qel::notification
