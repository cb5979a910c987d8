// Where the chart lies in a frame: 1000 chart units make the shorter side, and along the longer side the cards move
// apart. In a frame longer than four times its height the chart is a slice of one four times as high.
#ifndef SIM_CHARTPLACEMENT_H
#define SIM_CHARTPLACEMENT_H

#include <algorithm>

namespace zel::sim {

class ChartPlacement {
  public:
    ChartPlacement(unsigned width, unsigned height)
        : m_Width(std::max(width, 1u)),
          m_Height(std::max(height, 1u)),
          m_Scale(std::max(std::min(m_Width, m_Height), std::max(m_Width, m_Height) / 4.0) / 1000.0) {}

    double Scale() const { return m_Scale; }  // pixels per unit
    double PixelX(double x) const { return Pixel(x, m_Width); }
    double PixelY(double y) const { return Pixel(y, m_Height); }

  private:
    double Pixel(double place, double side) const {
        const double spread = 1.0 + std::max(side / (1000.0 * m_Scale) - 1.0, 0.0) * 0.8;
        return side / 2 + (place - 500.0) * spread * m_Scale;
    }

    double m_Width;
    double m_Height;
    double m_Scale;
};

}  // namespace zel::sim

#endif
