#include "base/sha256.h"

#include <openssl/evp.h>

#include <cstddef>
#include <stdexcept>

namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX *context) const { EVP_MD_CTX_free(context); }
};

void check(bool isDone)
{
    if (!isDone)
        throw std::runtime_error("SHA-256 cannot be computed");
}

} // namespace

struct Sha256::Context {
    Context() : handle(EVP_MD_CTX_new())
    {
        check(handle != nullptr);
        begin();
    }

    void begin() const { check(EVP_DigestInit_ex(handle.get(), EVP_sha256(), nullptr) == 1); }

    std::unique_ptr<EVP_MD_CTX, FreeContext> handle;
};

Sha256::Sha256() : m_context(std::make_unique<Context>()) {}

Sha256::~Sha256() = default;

void Sha256::add(const char *bytes, qint64 count)
{
    check(EVP_DigestUpdate(m_context->handle.get(), bytes, static_cast<std::size_t>(count)) == 1);
}

QByteArray Sha256::takeHex()
{
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    check(EVP_DigestFinal_ex(m_context->handle.get(), digest, &length) == 1);
    m_context->begin();
    return QByteArray(reinterpret_cast<const char *>(digest), static_cast<int>(length)).toHex();
}

QByteArray sha256Hex(const QByteArray &bytes)
{
    Sha256 sum;
    sum.add(bytes.constData(), bytes.size());
    return sum.takeHex();
}
