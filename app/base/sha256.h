#ifndef PHOTOLIB_BASE_SHA256_H
#define PHOTOLIB_BASE_SHA256_H

#include <QByteArray>
#include <QtGlobal>

#include <memory>

/// The SHA-256 of bytes that come piece by piece. For one thread at a time.
class Sha256
{
public:
    Sha256();
    ~Sha256();

    Sha256(const Sha256 &) = delete;
    Sha256 &operator=(const Sha256 &) = delete;

    void add(const char *bytes, qint64 count);

    /// Of all that was added, as 64 lower-case hexadecimal digits. The object begins anew.
    QByteArray takeHex();

private:
    struct Context;
    std::unique_ptr<Context> m_context;
};

/// The SHA-256 of `bytes`, as above.
QByteArray sha256Hex(const QByteArray &bytes);

#endif // PHOTOLIB_BASE_SHA256_H
