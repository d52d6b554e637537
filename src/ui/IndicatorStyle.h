#pragma once

/// Has check boxes and radio buttons drawn with outlines of the text's colour in dark palettes:
/// the "Fusion" style takes a darker shade of the window, which nobody sees there. Leaves any other
/// style of the application alone. To be called before windows are made.
void installIndicatorStyle();
