// Two ways to several processors: one triangulation that uses threads inside, and several triangulations, one in each thread.
#include <Norvik_2D.h>

#include <iostream>
#include <thread>
#include <vector>

using namespace KELMAR_NORVIK2D;

int main() {
    std::vector<Point2> points;
    generateRandomPoints(150000, 0, 1000, points, 1);

    // 1. Bulk insertion from 100,000 points on. 0 would mean as many threads as the hardware runs at once.
    Norvik_2D parallel, sequential;
    parallel.setNumCPU(2);
    parallel.insert(points);
    sequential.insert(points);
    std::cout << "as many triangles: " << std::boolalpha
              << (parallel.numberOfTriangles() == sequential.numberOfTriangles()) << '\n';

    // 2. Different objects know nothing of each other. One object belongs to one thread at a time.
    std::vector<Norvik_2D> tiles(4);
    std::vector<std::thread> workers;
    for (std::size_t i = 0; i < tiles.size(); ++i)
        workers.emplace_back([&tile = tiles[i], i] {
            std::vector<Point2> corners;
            generateCircle(12 + static_cast<int>(i), 30.0 * static_cast<double>(i), 0, 12, 12, corners);
            tile.insert(corners);
        });
    for (std::thread& worker : workers) worker.join();

    Visualizer2 picture("threads.ps");
    for (Norvik_2D& tile : tiles) {
        std::cout << tile.numberOfTriangles() << " triangles in a tile\n";
        tile.show(&picture);
    }
}
