#pragma once

/// Draws check boxes and radio buttons, and the frames of lists, fields and groups, with outlines
/// of the text's colour in dark palettes, where the "Fusion" style uses an invisible darker shade
/// of the window. Other styles do not change. Called before windows are made.
void installIndicatorStyle();
