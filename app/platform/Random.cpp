#include "Random.h"

#include "Platform.h"

SystemRandom::SystemRandom() : m_generator(QRandomGenerator::securelySeeded()) {}
SystemRandom::SystemRandom(std::uint32_t seed) : m_generator(seed) {}

// The C library declares arc4random too (glibc 2.36), as not throwing, and this definition takes its place.
// GCC holds the definition to the game's own declaration, clang to the library's.
#if defined(__clang__)
#define TARVOLIN_ARC4RANDOM_NOEXCEPT noexcept
#else
#define TARVOLIN_ARC4RANDOM_NOEXCEPT
#endif
std::uint32_t arc4random() TARVOLIN_ARC4RANDOM_NOEXCEPT {
    return Platform::shared().random().arc4random();
}
