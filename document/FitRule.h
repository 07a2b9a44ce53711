// How an image matrix becomes a picture on screen: the QImage made from a
// cv::Mat and the pixmap fitted into the space of a label (shrunk to its
// width, then to its height, never enlarged).
#pragma once

#include <QImage>
#include <QPixmap>
#include <QSize>

#include <opencv2/core.hpp>

// True when the matrix has data, non-zero dimensions and elements.
bool isShowableMat(const cv::Mat& mat);

// The QImage of a matrix, owning its pixels or keeping the matrix's pixels
// alive (no copy) for as long as it lives. Three channels: BGR converted to
// RGB888; four: BGRA converted to RGBA8888 (shown over the background). Any
// other channel count: the bytes wrapped as Indexed8 over
// cols x channels bytes per line with a grey-ramp colour table (grey images
// show as grey; other channel counts are shown as they are, unconverted).
// Matrices deeper than 8 bits are first scaled to 8 bits. A null image for a
// matrix that is not showable.
QImage matToQImage(const cv::Mat& mat);

// The pixmap shrunk (smoothly) to the available width if wider, then to the
// available height if still taller; never enlarged.
QPixmap fitPixmap(const QPixmap& pixmap, QSize available);
// matToQImage then fitPixmap; a null pixmap for a matrix that is not showable.
QPixmap fittedPixmap(const cv::Mat& mat, QSize available);
