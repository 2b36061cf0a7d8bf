#include "Random.h"

#include "Platform.h"

SystemRandom::SystemRandom() : m_generator(QRandomGenerator::securelySeeded()) {}
SystemRandom::SystemRandom(std::uint32_t seed) : m_generator(seed) {}

std::uint32_t arc4random() {
    return Platform::shared().random().arc4random();
}
