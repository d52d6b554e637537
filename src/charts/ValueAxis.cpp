#include "charts/ValueAxis.h"

#include "core/Numbers.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

enum class Prefixes { None, Si, Binary };

/// A power of 1000 or 1024 that values are divided by for reading.
struct Prefix
{
    double factor = 1;
    QString text;
};

Prefixes prefixesOf(const QString &unit)
{
    const QString base = unit.section(u'/', 0, 0).trimmed();
    if (base == u"B" || base.compare(u"byte", Qt::CaseInsensitive) == 0 ||
        base.compare(u"bytes", Qt::CaseInsensitive) == 0)
        return Prefixes::Binary;
    static const QStringList scaling = {
        QStringLiteral("bit"), QStringLiteral("bits"), QStringLiteral("b"), QStringLiteral("bps"),
        QStringLiteral("Hz"),  QStringLiteral("W"),    QStringLiteral("V"), QStringLiteral("A"),
        QStringLiteral("J"),   QStringLiteral("Wh"),   QStringLiteral("VA")};
    return scaling.contains(base) ? Prefixes::Si : Prefixes::None;
}

/// The prefix under which `greatest` reads as 1 to 999. Numbers of other units are plain until they
/// grow too long to read.
Prefix prefixFor(double greatest, const QString &unit)
{
    static constexpr std::array<char16_t, 7> large = {0, u'k', u'M', u'G', u'T', u'P', u'E'};
    static constexpr std::array<char16_t, 4> little = {0, u'm', 0xB5, u'n'};
    const Prefixes kind = prefixesOf(unit);
    const double base = kind == Prefixes::Binary ? 1024 : 1000;
    if (greatest == 0 || (kind == Prefixes::None && greatest < 100'000))
        return {};
    if (kind == Prefixes::Si && greatest < 1) {
        Prefix prefix;
        for (size_t i = 1; i < little.size() && greatest / prefix.factor < 1; ++i)
            prefix = {prefix.factor / base, QString(QChar(little[i]))};
        return prefix;
    }
    Prefix prefix;
    for (size_t i = 1; i < large.size() && greatest / prefix.factor >= base; ++i) {
        prefix.factor *= base;
        prefix.text = QString(QChar(large[i]));
        if (kind == Prefixes::Binary)
            prefix.text = prefix.text.toUpper() + u'i';
    }
    return prefix;
}

/// The next of 1, 2, 2.5, 5 and 10 times a power of ten.
double roundStep(double atLeast)
{
    const double power = std::pow(10, std::floor(std::log10(atLeast)));
    for (const double digit : {1.0, 2.0, 2.5, 5.0}) {
        if (digit * power >= atLeast * (1 - 1e-9))
            return digit * power;
    }
    return 10 * power;
}

/// Decimals that show a step exactly: 2 for 0.25.
int decimalsOf(double step)
{
    int decimals = 0;
    for (double scaled = step;
         decimals < 12 && std::abs(scaled - std::round(scaled)) > 1e-6 * scaled; scaled *= 10)
        ++decimals;
    return decimals;
}

/// 2e-8 instead of 2e-08.
QString shortExponent(QString text)
{
    const qsizetype sign = text.indexOf(u'e') + 1;
    if (sign > 0 && text.size() > sign + 2 && text[sign + 1] == u'0')
        text.remove(sign + 1, 1);
    return text;
}

QString axisNumber(double value, int decimals)
{
    if (decimals > 7)
        return shortExponent(QString::number(value, 'g', 4));
    return groupedNumber(value, decimals);
}

/// Where the axis has to begin and end at least.
void widen(double &least, double &greatest)
{
    const double reach = std::max(std::abs(least), std::abs(greatest));
    if (reach == 0) {
        greatest = 1;
        return;
    }
    const double spread = greatest - least;
    const bool flat = spread <= 1e-9 * reach;
    if (!flat && spread < 0.2 * reach)
        return; // close together, far from zero
    if (flat && greatest > 0)
        greatest *= 1.1; // a level line is not to lie on the edge
    else if (flat)
        least *= 1.1;
    least = std::min(least, 0.0);
    greatest = std::max(greatest, 0.0);
}

} // namespace

ValueAxis valueAxis(double least, double greatest, const QString &unit, int mostSteps)
{
    widen(least, greatest);
    const Prefix prefix = prefixFor(std::max(std::abs(least), std::abs(greatest)), unit);
    const double low = least / prefix.factor;
    const double high = greatest / prefix.factor;
    // One step is kept for the ends, which move out to round numbers.
    double step = roundStep((high - low) / std::max(1, mostSteps));
    double first = std::floor(low / step + 1e-9);
    double last = std::ceil(high / step - 1e-9);
    while (last - first > std::max(1, mostSteps)) {
        step = roundStep(step * 1.01);
        first = std::floor(low / step + 1e-9);
        last = std::ceil(high / step - 1e-9);
    }
    if (first == last)
        ++last;

    ValueAxis axis;
    const bool bare = unit.isEmpty() || prefixesOf(unit) == Prefixes::None;
    axis.unit = bare ? unit : prefix.text + unit;
    axis.least = first * step * prefix.factor;
    axis.greatest = last * step * prefix.factor;
    const int decimals = decimalsOf(step);
    for (double i = first; i <= last; ++i) {
        axis.ticks.push_back(i * step * prefix.factor);
        QString label = axisNumber(i == 0 ? 0 : i * step, decimals);
        if (bare && i != 0)
            label += prefix.text;
        axis.labels.push_back(label);
    }
    return axis;
}

ValueAxis percentAxis(int mostSteps)
{
    ValueAxis axis;
    axis.greatest = 100;
    const int steps = mostSteps >= 4 ? 4 : mostSteps >= 2 ? 2 : 1;
    for (int i = 0; i <= steps; ++i) {
        axis.ticks.push_back(100.0 * i / steps);
        axis.labels.push_back(QString::number(100 * i / steps) + u'%');
    }
    return axis;
}

QString readableValue(double value, const QString &unit)
{
    const Prefix prefix = prefixFor(std::abs(value), unit);
    const double scaled = value / prefix.factor;
    const double size = std::abs(scaled);
    QString text;
    if (size != 0 && (size < 1e-4 || size >= 1e7)) {
        text = shortExponent(QString::number(scaled, 'g', 4));
    } else {
        const int decimals = size >= 1000 || size == 0 ? 0 : size >= 100 ? 1 : size >= 1 ? 2 : 4;
        text = groupedNumber(scaled, decimals);
        if (text.contains(u'.')) {
            while (text.endsWith(u'0'))
                text.chop(1);
            if (text.endsWith(u'.'))
                text.chop(1);
        }
    }
    if (unit.isEmpty())
        return text + prefix.text;
    const bool closeUp = unit == u"%";
    return text + (closeUp ? QString() : QStringLiteral(" ")) + prefix.text + unit;
}
