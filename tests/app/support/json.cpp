#include "support/json.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace {

using Value = nlohmann::ordered_json;

const Value &valueOf(const std::shared_ptr<const void> &pointer)
{
    return *static_cast<const Value *>(pointer.get());
}

} // namespace

Json::Json(std::shared_ptr<const void> value) : m_value(std::move(value)) {}

Json Json::parse(const QByteArray &text)
{
    return Json(std::make_shared<const Value>(Value::parse(text.toStdString())));
}

Json Json::operator[](const char *key) const
{
    return Json({m_value, &valueOf(m_value).at(key)});
}

Json Json::operator[](std::size_t i) const
{
    return Json({m_value, &valueOf(m_value).at(i)});
}

std::size_t Json::size() const
{
    return valueOf(m_value).size();
}

std::vector<Json> Json::elements() const
{
    std::vector<Json> result;
    for (std::size_t i = 0; i < size(); ++i)
        result.push_back((*this)[i]);
    return result;
}

std::vector<std::string> Json::keys() const
{
    std::vector<std::string> result;
    for (const auto &member : valueOf(m_value).items())
        result.push_back(member.key());
    return result;
}

template <class T>
T Json::get() const
{
    return valueOf(m_value).get<T>();
}

template bool Json::get() const;
template int Json::get() const;
template qint64 Json::get() const;
template quint64 Json::get() const;
template std::size_t Json::get() const;
template std::string Json::get() const;
template std::vector<quint64> Json::get() const;

std::string Json::text() const
{
    return valueOf(m_value).dump();
}
