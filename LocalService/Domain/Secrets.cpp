#include "Domain/Secrets.h"

#include <array>
#include <new>
#include <stdexcept>

#include <sodium.h>

namespace parvela::service {

namespace {

void initialiseSodium() {
    if (sodium_init() < 0) throw std::runtime_error("libsodium finds no source of random numbers.");
}

}  // namespace

SystemRandom::SystemRandom() {
    initialiseSodium();
}

std::uint32_t SystemRandom::below(std::uint32_t bound) {
    return randombytes_uniform(bound);
}

PasswordHasher::PasswordHasher(PasswordCost cost) : cost_(cost) {
    initialiseSodium();
}

std::string PasswordHasher::hash(std::string_view password) const {
    const bool minimal = cost_ == PasswordCost::minimal;
    std::array<char, crypto_pwhash_STRBYTES> text{};
    if (crypto_pwhash_str_alg(text.data(), password.data(), password.size(),
                              minimal ? crypto_pwhash_OPSLIMIT_MIN : crypto_pwhash_OPSLIMIT_INTERACTIVE,
                              minimal ? crypto_pwhash_MEMLIMIT_MIN : crypto_pwhash_MEMLIMIT_INTERACTIVE,
                              crypto_pwhash_ALG_ARGON2ID13) != 0) {
        throw std::bad_alloc();
    }
    return text.data();
}

bool PasswordHasher::verify(std::string_view password, const std::string& hash) const {
    return crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

void PasswordHasher::verifyNobody(std::string_view password) const {
    static_cast<void>(hash(password));
}

std::string secretHash(std::string_view secret) {
    std::string hash(crypto_generichash_BYTES, '\0');
    crypto_generichash(reinterpret_cast<unsigned char*>(hash.data()), hash.size(),
                       reinterpret_cast<const unsigned char*>(secret.data()), secret.size(), nullptr, 0);
    return hash;
}

}  // namespace parvela::service
