#ifndef PHOTOLIB_CAMERADB_ORDERED_INSERT_H
#define PHOTOLIB_CAMERADB_ORDERED_INSERT_H

/// Inserts into a QMap a key that is most likely greater than all of its keys. The hint
/// spares the search where Qt's map takes one (from Qt 5 on); the result is that of
/// `map.insert(key, value)` in any case.
template <class Map, class Key, class Value>
auto insertLast(Map &map, const Key &key, const Value &value)
    -> decltype(map.insert(map.constEnd(), key, value))
{
    return map.insert(map.constEnd(), key, value);
}

template <class Map, class Key, class Value, class... NoHint>
auto insertLast(Map &map, const Key &key, const Value &value, NoHint...)
    -> decltype(map.insert(key, value))
{
    return map.insert(key, value);
}

#endif // PHOTOLIB_CAMERADB_ORDERED_INSERT_H
