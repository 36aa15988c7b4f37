// BubblesInfo: the list of its controls.
#include "bubbles/bubbles_info.h"

std::array<ControlQv *, BubblesInfo::kControlCount> BubblesInfo::controls() {
    return {&demos,
            &restart[0], &restart[1], &restart[2], &restart[3],
            &restartPreRoll[0], &restartPreRoll[1], &restartPreRoll[2], &restartPreRoll[3],
            &doPreRoll[0], &doPreRoll[1], &doPreRoll[2], &doPreRoll[3],
            &preRoll, &advance, &seed, &left, &right, &positionVar, &density, &lifetime,
            &timeMaxSize, &useBirthMatte, &initialVelocity, &velocityVar, &velDir, &growthMode,
            &bubbleSize, &bubbleSizeVar, &colourVar, &monoVar, &bubbleColour, &fadeMode,
            &gravityOn, &gravity, &gravAngle, &frictionOn, &friction, &turbulenceOn, &swirlDens,
            &swirlAmp, &swirlMaxTime, &burstOn, &burstProbability, &burstQuantity, &burstExtent,
            &afterlife, &congregate, &lightOn, &lightSource, &lightTarget, &lightZ, &glistenTight,
            &lightSpread, &lightIntensity, &minBright, &shine, &highlight, &lightColour,
            &reflectionsOn, &refIntensity, &autoPreview};
}
