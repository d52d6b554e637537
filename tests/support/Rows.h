#pragma once

#include <QTest>

#include <tuple>

/// The table of a data-driven test: made with the names of its columns, called once for each row.
///
///     const Rows<QString, int> row("text", "number");
///     row("blanks before", "  12", 12);
///     row.each({{"12", 12}, {"abc", 0}}); // rows named by their first text
template <typename... Types>
class Rows
{
public:
    template <typename... Names>
    explicit Rows(Names... names)
    {
        (QTest::addColumn<Types>(names), ...);
    }

    void operator()(const char *name, const Types &...values) const
    {
        (QTest::newRow(name) << ... << values);
    }

    void each(std::initializer_list<std::tuple<Types...>> rows) const
    {
        for (const auto &row : rows)
            std::apply([this](const auto &text,
                              const auto &...rest) { (*this)(qPrintable(text), text, rest...); },
                       row);
    }
};
