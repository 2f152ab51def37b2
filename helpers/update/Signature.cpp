#include "helpers/update/Signature.h"

#include <sodium.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace rb {

namespace {

// The decoded bytes; nothing unless there are exactly `size` of them.
std::optional<std::string> decode(const std::string& base64, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t length = 0;
    const char* end = nullptr;
    const int result = sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), base64.data(),
                                         base64.size(), nullptr, &length, &end, sodium_base64_VARIANT_ORIGINAL);
    if (result != 0 || length != size || end != base64.data() + base64.size()) {
        return std::nullopt;
    }
    return bytes;
}

const unsigned char* unsignedBytes(const std::string& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

} // namespace

std::optional<UpdateKey> UpdateKey::read(const std::string& base64) {
    auto bytes = sodium_init() >= 0 ? decode(base64, crypto_sign_PUBLICKEYBYTES) : std::nullopt;
    if (!bytes) {
        return std::nullopt;
    }
    UpdateKey key;
    key.bytes_ = std::move(*bytes);
    return key;
}

bool UpdateKey::hasSigned(int file, const std::string& base64Signature) const {
    const auto signature = decode(base64Signature, crypto_sign_BYTES);
    struct stat status {};
    if (!signature || fstat(file, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0) {
        return false;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    void* content = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    if (content == MAP_FAILED) {
        return false;
    }
    const int result = crypto_sign_verify_detached(unsignedBytes(*signature), static_cast<unsigned char*>(content),
                                                   size, unsignedBytes(bytes_));
    munmap(content, size);
    return result == 0;
}

} // namespace rb
