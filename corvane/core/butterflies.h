#pragma once

namespace corvane {

/// A complex number in single precision.
struct Complex {
    float re;
    float im;
};

inline Complex operator+(Complex a, Complex b)
{
    return {a.re + b.re, a.im + b.im};
}

inline Complex operator-(Complex a, Complex b)
{
    return {a.re - b.re, a.im - b.im};
}

inline Complex operator*(Complex a, Complex b)
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

inline Complex operator*(float factor, Complex a)
{
    return {factor * a.re, factor * a.im};
}

/// -i a
inline Complex TurnedBack(Complex a)
{
    return {a.im, -a.re};
}

/// The transforms of 2, 3, 4 and 5 numbers, from `in` to `out`.
template <int radix>
struct Butterfly;

/// Of two numbers.
template <>
struct Butterfly<2> {
    static void Apply(const Complex* in, Complex* out)
    {
        const Complex a = in[0];
        const Complex b = in[1];
        out[0] = a + b;
        out[1] = a - b;
    }
};

/// Of three numbers.
template <>
struct Butterfly<3> {
    static void Apply(const Complex* in, Complex* out)
    {
        constexpr float kSine = 0.866025403784438647F; // of 60 degrees
        const Complex a = in[0];
        const Complex sum = in[1] + in[2];
        const Complex across = TurnedBack(kSine * (in[1] - in[2]));
        const Complex middle = a - 0.5F * sum;
        out[0] = a + sum;
        out[1] = middle + across;
        out[2] = middle - across;
    }
};

/// Of four numbers.
template <>
struct Butterfly<4> {
    static void Apply(const Complex* in, Complex* out)
    {
        const Complex a = in[0];
        const Complex b = in[1];
        const Complex c = in[2];
        const Complex d = in[3];
        const Complex even = a + c;
        const Complex odd = b + d;
        const Complex evenRest = a - c;
        const Complex oddRest = TurnedBack(b - d);
        out[0] = even + odd;
        out[1] = evenRest + oddRest;
        out[2] = even - odd;
        out[3] = evenRest - oddRest;
    }
};

/// Of five numbers.
template <>
struct Butterfly<5> {
    static void Apply(const Complex* in, Complex* out)
    {
        constexpr float kCosine1 = 0.309016994374947424F; // of 72 degrees
        constexpr float kSine1 = 0.951056516295153572F;
        constexpr float kCosine2 = -0.809016994374947424F; // of 144 degrees
        constexpr float kSine2 = 0.587785252292473129F;
        const Complex a = in[0];
        const Complex sum1 = in[1] + in[4];
        const Complex sum2 = in[2] + in[3];
        const Complex rest1 = in[1] - in[4];
        const Complex rest2 = in[2] - in[3];
        const Complex middle1 = a + kCosine1 * sum1 + kCosine2 * sum2;
        const Complex middle2 = a + kCosine2 * sum1 + kCosine1 * sum2;
        const Complex across1 = TurnedBack(kSine1 * rest1 + kSine2 * rest2);
        const Complex across2 = TurnedBack(kSine2 * rest1 - kSine1 * rest2);
        out[0] = a + sum1 + sum2;
        out[1] = middle1 + across1;
        out[2] = middle2 + across2;
        out[3] = middle2 - across2;
        out[4] = middle1 - across1;
    }
};

} // namespace corvane
