#ifndef PHOTOLIB_TESTS_APP_SUPPORT_JSON_H
#define PHOTOLIB_TESTS_APP_SUPPORT_JSON_H

#include <QByteArray>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// A value of a JSON text. What reads JSON takes long to compile and is in one source only.
///
/// Throws an exception, which fails the test, where a key, an element or a value of the type
/// asked for is not there.
class Json
{
public:
    /// The value of the whole `text`, which must be valid.
    static Json parse(const QByteArray &text);

    /// The members of an object by key, the elements of a list by number.
    Json operator[](const char *key) const;
    Json operator[](std::size_t i) const;
    Json operator[](int i) const { return (*this)[static_cast<std::size_t>(i)]; }

    /// How many members or elements there are.
    std::size_t size() const;
    std::vector<Json> elements() const;

    /// The keys of an object, in the text's order.
    std::vector<std::string> keys() const;

    /// As a bool, int, qint64, quint64, std::size_t, std::string or a vector of quint64.
    template <class T>
    T get() const;

    /// The value as JSON without spaces, its members in the text's order.
    std::string text() const;

private:
    explicit Json(std::shared_ptr<const void> value);

    std::shared_ptr<const void> m_value; ///< keeps alive the text's value, which it is part of
};

#endif // PHOTOLIB_TESTS_APP_SUPPORT_JSON_H
