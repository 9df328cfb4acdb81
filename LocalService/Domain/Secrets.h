#pragma once

#include "Domain/Random.h"

#include <string>
#include <string_view>

namespace parvela::service {

/// Random numbers from the operating system, by libsodium.
class SystemRandom final : public Random {
public:
    SystemRandom();
    std::uint32_t below(std::uint32_t bound) override;
};

/// How much work one password check costs.
enum class PasswordCost {
    interactive,  ///< libsodium's interactive limits: about 64 MiB and a tenth of a second
    minimal,      ///< the least that argon2id accepts; for tests
};

/// Argon2id hashes of passwords, with their salt and limits in the text.
class PasswordHasher {
public:
    explicit PasswordHasher(PasswordCost cost);

    /// Throws std::bad_alloc when the machine has not the memory for it.
    std::string hash(std::string_view password) const;
    bool verify(std::string_view password, const std::string& hash) const;
    /// Does the work of verify() for an account that does not exist, so that the time tells nothing.
    void verifyNobody(std::string_view password) const;

private:
    PasswordCost cost_;
};

/// BLAKE2b-256 of a random secret: what is stored in its place. Secrets are long and random, so no salt and no slowness
/// is needed.
std::string secretHash(std::string_view secret);

}  // namespace parvela::service
