#include "Turn.h"

#include "TextValues.h"

#include <cmath>
#include <numbers>

namespace lusym
{

std::optional<Turn> ParseTurn(const std::string& text)
{
    const bool isNamed = text.size() > 2 && text[1] == ',' && text[0] >= 'x' && text[0] <= 'z';
    const std::string axis = !isNamed ? "" : text[0] == 'x' ? "1,0,0" : text[0] == 'y' ? "0,1,0" : "0,0,1";
    const std::vector<double> numbers = ParseNumbers(isNamed ? axis + text.substr(1) : text, ',');
    const double length = numbers.size() == 4 ? std::hypot(numbers[0], numbers[1], numbers[2]) : 0.0;
    if (!(length > 0.0) || !std::isfinite(length)) {
        return std::nullopt;
    }
    return Turn{{numbers[0] / length, numbers[1] / length, numbers[2] / length}, numbers[3]};
}

dg::FMat33 MatrixOf(const Turn& turn)
{
    const double angle = turn.degrees * std::numbers::pi / 180.0;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const auto& [x, y, z] = turn.axis;
    const auto f = [](double value) { return static_cast<float>(value); };
    const double d = 1.0 - c;
    return {f(c + x * x * d),     f(x * y * d - z * s), f(x * z * d + y * s), f(y * x * d + z * s), f(c + y * y * d),
            f(y * z * d - x * s), f(z * x * d - y * s), f(z * y * d + x * s), f(c + z * z * d)};
}

} // namespace lusym
