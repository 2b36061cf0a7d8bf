#include "Animator.h"

#include "Platform.h"

void ScheduledAnimator::animateWithDurationAnimationsCompletion(double seconds, std::function<void()> changes,
                                                                std::function<void()> completion) {
    if (changes) {
        changes();
    }
    if (completion) {
        Platform::shared().scheduler().schedule(seconds, std::move(completion));
    }
}
