#include "devices/kit/ParameterTable.h"

#include <algorithm>
#include <utility>

namespace zel::kit {

int ParameterTable::Number(int index) const {
    const Value& value = Get(index);
    if (const double* const number = std::get_if<double>(&value)) return static_cast<int>(*number);
    const int* const number = std::get_if<int>(&value);
    return number ? *number : 0;
}

std::string ParameterTable::Text(int index) const {
    const std::string* const text = std::get_if<std::string>(&Get(index));
    return text ? *text : std::string();
}

void ParameterTable::Store(int index, Value value) {
    if (std::string* const text = std::get_if<std::string>(&value)) {
        text->resize(std::min<std::size_t>(text->find('\0'), text->size()));
        if (text->size() > kTextCapacity - 1) text->resize(kTextCapacity - 1);
    }
    Value& held = m_Values[static_cast<std::size_t>(index)];
    if (held == value) return;
    held = std::move(value);
    m_Unread.set(static_cast<std::size_t>(index));
}

}  // namespace zel::kit
