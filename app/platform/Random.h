#pragma once

#include <QRandomGenerator>
#include <cstdint>

// The game's one source of randomness; taken modulo the range at each use.
class Random {
public:
    virtual ~Random() = default;
    virtual std::uint32_t arc4random() = 0;
};

class SystemRandom : public Random {
public:
    SystemRandom();
    explicit SystemRandom(std::uint32_t seed);
    std::uint32_t arc4random() override { return m_generator.generate(); }

private:
    QRandomGenerator m_generator;
};

// The platform's randomness for the game's code: Platform::shared().random().
std::uint32_t arc4random() noexcept;
