#include "Emitter.h"

void MyEmitter::start(const QString& kind, double seconds) {
    m_runs[kind] += 1;
    emit started(kind, seconds);
}

void MyEmitter::startEmitterOnViewForDuration(ViewController*, double seconds) {
    start(kConfetti, seconds);
}
void MyEmitter::startGoldEmitterOnViewForDuration(ViewController*, double seconds) {
    start(kGold, seconds);
}
void MyEmitter::startBattleWinEmitterOnViewForDuration(ViewController*, double seconds) {
    start(kBattleWin, seconds);
}
void MyEmitter::startGCRankEmitterOnViewForDuration(ViewController*, double seconds) {
    start(kRank, seconds);
}
void MyEmitter::startRoundEmitterOnViewForDuration(ViewController*, double seconds) {
    start(kRound, seconds);
}
