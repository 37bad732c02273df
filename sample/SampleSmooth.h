#pragma once

#include "sample/SampleGrid.h"

/// A moving mean over a square of 2 x `radius` + 1 grid points a side; the border extends outward.
void SampleSmooth(SampleGrid<float> &grid, int radiusAlongX, int radiusAlongY);
