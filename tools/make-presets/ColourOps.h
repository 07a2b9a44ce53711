// Colour operations the preset recipes are written in. Colours are display
// (sRGB-encoded) red, green, blue values from 0 to 1; every operation keeps
// its result inside that range.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

using Rgb = std::array<double, 3>;
using ColourOp = std::function<Rgb(const Rgb&)>;

// Builds one operation from its name and numeric arguments, e.g.
// ("exposure", {0.6}). Returns an empty function and sets error when the name
// is unknown or the arguments do not fit. The operations:
//   exposure EV                 light times 2^EV, highlights rolled off
//   gamma G                     each channel to the power G (G > 1 darkens)
//   contrast K                  K > 0 S-curve, K < 0 compressed tonal range
//   levels BLACK WHITE          stretches BLACK..WHITE to 0..1
//   fade A                      lifts black to A, lowers white to 1 - A/2
//   curve X:Y ...               tone curve on each channel (monotone spline)
//   curve.r / curve.g / curve.b X:Y ...   tone curve on one channel
//   lcurve X:Y ...              tone curve on luminance, hue kept
//   saturation S                chroma times S
//   vibrance V                  more chroma where colours are dull
//   temperature T               T > 0 warmer (redder), T < 0 cooler (bluer)
//   tint T                      T > 0 towards magenta, T < 0 towards green
//   split HS AS HH AH           hue HS at strength AS into the shadows, hue HH
//                               at AH into the highlights (hues in degrees)
//   huesat HUE WIDTH S L        colours within WIDTH degrees of HUE: chroma
//                               times S, lightness plus L
//   mix RR RG RB GR GG GB BR BG BB   channel mixer (rows: output red, green, blue)
//   mono WR WG WB               monochrome from the weighted channels
//   tone HUE A                  even toning of a monochrome picture
ColourOp makeColourOp(const std::string& name, const std::vector<std::string>& args, std::string& error);

// Luma of a display colour (Rec. 709 weights).
double luma(const Rgb& c);
