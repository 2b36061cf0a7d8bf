#pragma once

#include <functional>

// View animations with a completion. `changes` runs at once (the views animate the change of their frames
// over `seconds`), `completion` at the animation's end.
class Animator {
public:
    virtual ~Animator() = default;
    virtual void animateWithDurationAnimationsCompletion(double seconds, std::function<void()> changes,
                                                         std::function<void()> completion) = 0;
};

// Ends each animation on the platform's scheduler after its duration.
class ScheduledAnimator : public Animator {
public:
    void animateWithDurationAnimationsCompletion(double seconds, std::function<void()> changes,
                                                 std::function<void()> completion) override;
};
