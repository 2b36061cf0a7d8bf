#pragma once

class Navigator;
class QQmlEngine;

// Registers every screen identifier with the navigator, and the view types with QML.
void registerScreens(Navigator& navigator);
void registerQmlTypes();
