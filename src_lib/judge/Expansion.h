#ifndef ZEF_EXPANSION_H
#define ZEF_EXPANSION_H

#include <array>
#include <cstddef>

namespace TARN_ZEF
{
// A number kept exactly, as the sum of up to N doubles.
//
// Invariant:  no two components overlap in their bits, magnitudes rise, zeros are left out; so the last component
//             has the sign of the sum.
// Exact       as long as nothing overflows and all is a multiple of the smallest double; the caller's numbers must
//             be of a range that keeps products inside. N must hold all components that are added: two for each
//             product of doubles.
// Needs       round to nearest even, and no fused multiply-add made by the compiler; uses none itself.
// Source:     J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric predicates,
//             Discrete & Computational Geometry 18, 1997: two-sum, two-product (Dekker, Veltkamp) and
//             grow-expansion with zero elimination. Sums and products are made of grow-expansion alone: its proof
//             (theorem 10) asks nothing of the added number, and speed matters little here.
template <std::size_t N>
class Expansion
{
public:
    Expansion() = default;

    [[nodiscard]] static Expansion difference(double a, double b)
    {
        Expansion e;
        e.add(a);
        e.add(-b);
        return e;
    }

    void add(double b)
    {
        double sum = b;
        std::size_t numKept = 0;
        for (std::size_t i = 0; i < num; ++i)
        {
            const double lost = addTwo(sum, vParts[i]);
            if (lost != 0.0)
                vParts[numKept++] = lost;
        }
        if (sum != 0.0)
            vParts[numKept++] = sum;
        num = numKept;
    }

    // Adds factor times the product of the others; factor is 1.0 or -1.0.
    template <std::size_t A, std::size_t B>
    void addProduct(const Expansion<A>& a, const Expansion<B>& b, double factor = 1.0)
    {
        static_assert(N >= 2 * A * B);
        for (std::size_t i = 0; i < a.size(); ++i)
            for (std::size_t k = 0; k < b.size(); ++k)
                addProductOfTwo(factor * a[i], b[k]);
    }

    [[nodiscard]] int getSign() const { return num == 0 ? 0 : vParts[num - 1] > 0.0 ? 1 : -1; }
    [[nodiscard]] std::size_t size() const { return num; }
    [[nodiscard]] double operator[](std::size_t i) const { return vParts[i]; }

private:
    // a becomes the rounded sum; returns what rounding took.
    [[nodiscard]] static double addTwo(double& a, double b)
    {
        const double sum = a + b;
        const double bPart = sum - a;
        const double aPart = sum - bPart;
        const double lost = (a - aPart) + (b - bPart);
        a = sum;
        return lost;
    }

    void addProductOfTwo(double a, double b)
    {
        const double product = a * b;
        const double aHigh = highHalf(a);
        const double bHigh = highHalf(b);
        const double aLow = a - aHigh;
        const double bLow = b - bHigh;
        const double excess = ((product - aHigh * bHigh) - aLow * bHigh) - aHigh * bLow;
        add(aLow * bLow - excess);
        add(product);
    }

    // The upper 26 bits of the 53.
    [[nodiscard]] static double highHalf(double a)
    {
        const double big = 134217729.0 * a; // 2^27 + 1
        return big - (big - a);
    }

    std::array<double, N> vParts;
    std::size_t num = 0;
};

} // namespace TARN_ZEF

#endif
