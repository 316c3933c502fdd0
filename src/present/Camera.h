#pragma once

// The view: world position of the bottom left corner, zoom in screen pixels per world pixel,
// and the scrolling speed in world pixels per second.
struct Camera {
  float x = 0.0f;
  float y = 0.0f;
  float zoom = 1.0f;
  float velocityX = 0.0f;
  float velocityY = 0.0f;
};

// A clear colour, each channel from 0 to 1.
struct RGBColour {
  float red = 0.0f;
  float green = 0.0f;
  float blue = 0.0f;
};
