#pragma once

class Navigator;
class QQmlApplicationEngine;

#include <memory>

// Registers every screen identifier with the navigator, and the view types with QML.
void registerScreens(Navigator& navigator);
void registerQmlTypes();
// The QML engine with the platform's objects in its context and the window loaded; null when the window
// could not be made.
std::unique_ptr<QQmlApplicationEngine> createGameEngine();
