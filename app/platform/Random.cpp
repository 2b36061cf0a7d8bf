#include "Random.h"

#include "Platform.h"

SystemRandom::SystemRandom() : m_generator(QRandomGenerator::securelySeeded()) {}
SystemRandom::SystemRandom(std::uint32_t seed) : m_generator(seed) {}

// The C library declares arc4random too (glibc 2.36), as not throwing; the game's declaration says the same,
// so that every compiler takes this definition for the one function.
std::uint32_t arc4random() noexcept {
    return Platform::shared().random().arc4random();
}
