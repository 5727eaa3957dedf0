#include "locate/RegularSFRLocate.h"

#include <exception>

#include <opencv2/imgproc.hpp>

#include "locate/ChartProjection.h"
#include "locate/IntConversion.h"

namespace RegularSFR {

RegularSFRLocate::RegularSFRLocate(const cv::Mat& image)
    : workImage(image.clone()), sourceImage(image) {}

RegularSFRLocate::RegularSFRLocate(const cv::Mat& image, const cv::Mat& downscaled)
    : workImage(downscaled), sourceImage(image), workImageGiven(true) {}

void RegularSFRLocate::setScale(double s) {
    if (s == 1.0) {
        return;
    }
    scale = s;
    scaled = true;
}

void RegularSFRLocate::initEdgeAndcorner(int count, const int* cornerX, const int* cornerY,
                                         const int* cornerKind, const int* cornerEdge,
                                         const int* edgeCode) {
    if (count <= 0 || cornerX == nullptr || cornerY == nullptr || cornerKind == nullptr ||
        cornerEdge == nullptr || edgeCode == nullptr) {
        // The error carries the location callers have always seen, not this file's.
        cv::error(1, "", "RegularSFR::RegularSFRLocate::initEdgeAndcorner", "RegularSFRLocate", 89);
    }
    // Edge indices may run up to count - 1; unnamed ones are dropped below.
    std::vector<ChartEdge> scratch(static_cast<std::size_t>(count));
    std::size_t used = 0;
    corners.resize(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        ChartCorner& corner = corners[i];
        corner.chartX = static_cast<float>(cornerX[i]);
        corner.chartY = static_cast<float>(cornerY[i]);
        corner.kind = cornerKind[i];
        const int e = cornerEdge[i];
        if (e < 0 || e >= count) {
            continue;
        }
        ChartEdge& edge = scratch[e];
        if (edge.cornerCount == 0) {
            edge.edgeCode = edgeCode[i];
            ++used;
        }
        if (edge.cornerCount < 2) {
            (edge.cornerCount == 0 ? edge.corner0 : edge.corner1) = i;
            ++edge.cornerCount;
        }
    }
    edges.resize(used);
    std::size_t next = 0;
    for (const ChartEdge& edge : scratch) {
        if (edge.cornerCount != 0) {
            edges[next++] = edge;
        }
    }
    initialized = true;
}

void RegularSFRLocate::initEdgeAndcorner(const ChartLayoutTable& table) {
    initEdgeAndcorner(table.count, table.cornerX, table.cornerY, table.cornerKind, table.cornerEdge,
                      table.edgeCode);
}

bool RegularSFRLocate::computePerspective(int count, const int* fromX, const int* fromY,
                                          const int* toX, const int* toY) {
    if (count <= 0 || fromX == nullptr || fromY == nullptr || toX == nullptr || toY == nullptr) {
        return false;
    }
    std::vector<cv::Point2f> from(static_cast<std::size_t>(count));
    std::vector<cv::Point2f> to(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        from[i] = cv::Point2f(static_cast<float>(fromX[i]), static_cast<float>(fromY[i]));
        to[i] = cv::Point2f(static_cast<float>(toX[i]), static_cast<float>(toY[i]));
    }
    // OpenCV insists on exactly four correspondences and throws otherwise.
    perspective = cv::getPerspectiveTransform(from, to);
    return true;
}

int RegularSFRLocate::prepare() {
    if (scaled) {
        markSearchSize = truncateToInt(markSearchSize * scale);
        cornerSearchSize = truncateToInt(cornerSearchSize * scale);
        // Dividing the third row by the scale makes the matrix map into the downscaled image.
        // Without a matrix there is nothing to adjust, and the corner search refuses to run.
        if (isHomography(perspective)) {
            double* third = perspective.ptr<double>(2);
            for (int c = 0; c < 3; ++c) {
                third[c] /= scale;
            }
        }
        if (!workImageGiven) {
            cv::resize(sourceImage, workImage, cv::Size(), scale, scale, cv::INTER_LINEAR);
        }
    } else {
        workImage = sourceImage.clone();
    }
    if (!refineCorners()) {
        return -1;
    }
    if (!computeEdgeCenters()) {
        return -1;
    }
    return 0;
}

bool RegularSFRLocate::computeEdgeCenters() {
    const auto placed = [this](int index) {
        return index >= 0 && static_cast<std::size_t>(index) < corners.size() &&
               corners[index].found;
    };
    // The edges are independent: each is computed on a copy in parallel, and the copies are
    // taken in edge order up to the first failure or exception, so that the edges after it
    // stay as a one-by-one walk would leave them.
    std::vector<ChartEdge> computed(edges);
    std::vector<char> done(edges.size(), 0);
    std::vector<std::exception_ptr> failures(edges.size());
    const int count = static_cast<int>(edges.size());
#pragma omp parallel for schedule(dynamic)
    for (int i = 0; i < count; ++i) {
        ChartEdge& edge = computed[i];
        try {
            if (edge.cornerCount == 2) {
                if (placed(edge.corner0) && placed(edge.corner1)) {
                    edge.x = (corners[edge.corner1].x + corners[edge.corner0].x) * 0.5f;
                    edge.y = (corners[edge.corner1].y + corners[edge.corner0].y) * 0.5f;
                    edge.found = true;
                    done[i] = 1;
                }
            } else if (edge.cornerCount == 1) {
                done[i] = findEdgeCrossing(edge, markSearchSize) ? 1 : 0;
            }
        } catch (...) {
            failures[i] = std::current_exception();
        }
    }
    for (int i = 0; i < count; ++i) {
        if (failures[i]) {
            std::rethrow_exception(failures[i]);
        }
        if (done[i] == 0) {
            return false;
        }
        edges[i] = computed[i];
    }
    return true;
}

std::vector<cv::Point> RegularSFRLocate::getEdgeCenters() {
    std::vector<cv::Point> centres;
    if (edges.empty() || !edges.front().found) {
        return centres;
    }
    centres.reserve(edges.size());
    for (const ChartEdge& edge : edges) {
        centres.emplace_back(truncateToInt(edge.x), truncateToInt(edge.y));
    }
    return centres;
}

}  // namespace RegularSFR
