// The vector body of shading_terms.cpp. Included there once per instruction
// set, inside a namespace and a target region of its own, so it has no
// include guard. Before it, the includer defines Lanes<M>::{Doubles, Floats,
// Ints, Words, Longs} and struct Isa with gather(table, indices),
// root(doubles) and none(ints), whether every lane is 0, for its blocks of
// M lanes.

template <class Vector, class T>
[[gnu::always_inline]] inline Vector load(const T *values) {
    Vector vector;
    std::memcpy(&vector, values, sizeof vector);
    return vector;
}

// Each lane as shade_pixel and UnitPower::bracket compute it.
template <int M>
struct Kernel {
    using Doubles = typename Lanes<M>::Doubles;
    using Floats = typename Lanes<M>::Floats;
    using Ints = typename Lanes<M>::Ints;
    using Words = typename Lanes<M>::Words;
    using Longs = typename Lanes<M>::Longs;

    // log2(d) for lanes holding a normal float in (0, 1].
    [[gnu::always_inline]] static Doubles log2_of(const Words &bits, const UnitPowerTables &t) {
        const Ints cut = Ints((bits >> 15) & 0xffu);
        const Doubles low = __builtin_convertvector(Ints(bits & 0x7fffu), Doubles) * (1.0 / (1u << 23));
        const Doubles r = low * Isa::gather(t.inverse_cut, cut);
        const Doubles series =
            r * (1.0 + r * (-1.0 / 2 + r * (1.0 / 3 + r * (-1.0 / 4 + r * (1.0 / 5 + r * (-1.0 / 6))))));
        const Doubles log2_mantissa = Isa::gather(t.log2_cut, cut) + series * 1.4426950408889634;
        return __builtin_convertvector(Ints(bits >> 23) - 127, Doubles) + log2_mantissa;
    }

    // 2^y for y in [-60, 0].
    [[gnu::always_inline]] static Doubles exp2_of(const Doubles &y, const UnitPowerTables &t) {
        const Ints k = __builtin_convertvector(y * 64.0 + 4096.5, Ints) - 4096;
        const Doubles f = y - __builtin_convertvector(k, Doubles) * (1.0 / 64);
        const Doubles g = f * 0.6931471805599453;
        const Doubles e = 1.0 + g * (1.0 + g * (1.0 / 2 + g * (1.0 / 6 + g * (1.0 / 24 + g * (1.0 / 120)))));
        const Longs scale_bits = (__builtin_convertvector(k >> 6, Longs) + 1023) << 52;
        Doubles scale;
        std::memcpy(&scale, &scale_bits, sizeof scale);
        return scale * (Isa::gather(t.exp2_step, k & 63) * e);
    }

    // [lo, hi] around d^s from y = s log2 d; `zero` lanes had d = 0.
    [[gnu::always_inline]] static void bracket(const Doubles &y, const Longs &zero, const UnitPowerTables &t,
                                               Doubles &lo, Doubles &hi) {
        const Longs tiny = y < -60.0;
        const Doubles p = exp2_of(tiny ? Doubles{} : y, t);
        constexpr double margin = 1.0 / (1u << 30);
        constexpr double tiny_power = 1.0 / (double(1u << 30) * double(1u << 29));
        lo = tiny | zero ? Doubles{} : p * (1.0 - margin);
        hi = zero ? Doubles{} : tiny ? Doubles{} + tiny_power : p * (1.0 + margin);
    }

    // The same from a power p computed within 2^-42 by multiplication.
    [[gnu::always_inline]] static void bracket_product(const Doubles &p, const Longs &zero, Doubles &lo,
                                                       Doubles &hi) {
        constexpr double margin = 1.0 / (1u << 30);
        constexpr double tiny_power = 1.0 / (double(1u << 30) * double(1u << 29));
        const Longs tiny = p < 1.0 / (double(1u << 30) * double(1u << 30));
        lo = tiny | zero ? Doubles{} : p * (1.0 - margin);
        hi = zero ? Doubles{} : tiny ? Doubles{} + tiny_power : p * (1.0 + margin);
    }

    // x^m and x^n by repeated squaring shared between them, as
    // UnitPower::whole_power takes each.
    [[gnu::always_inline]] static void whole_powers(Doubles x, uint32_t m, uint32_t n, Doubles &pm, Doubles &pn) {
        pm = pn = Doubles{} + 1.0;
        for (;;) {
            if (m & 1u) pm *= x;
            if (n & 1u) pn *= x;
            m >>= 1;
            n >>= 1;
            if (!(m | n)) return;
            x *= x;
        }
    }

    // The lit and highlight terms of the block's lanes (coverage, nx, ny).
    [[gnu::always_inline]] static Doubles depth_of(const Floats &nx, const Floats &ny) {
        Floats nz2 = 1.0f - nx * nx - ny * ny;
        nz2 = nz2 < 0.0f ? Floats{} : nz2;
        return Isa::root(__builtin_convertvector(nz2, Doubles));
    }

    [[gnu::always_inline]] static void terms(const BubbleShade &c, const UnitPowerTables &t, const Ints &coverage,
                                             const Floats &nx, const Floats &ny, const Doubles &depth, Ints &lit,
                                             Ints &high) {
        const double base = c.min_bright / 100, glint = c.glint;
        const double shine = c.shine.exponent(), highlight = c.highlight.exponent();
        Floats d = __builtin_convertvector(
            __builtin_convertvector(c.lx * nx + c.ly * ny, Doubles) + double(c.lz) * depth, Floats);
        d = d < 0.0f ? Floats{} : d;
        d = d > 1.0f ? Floats{} + 1.0f : d;

        Words bits;
        std::memcpy(&bits, &d, sizeof bits);
        const Words biased = bits >> 23;
        // Normal floats in (0, 1], or zero of either sign; the rest to std::pow.
        const Ints zero32 = (bits & 0x7fffffffu) == 0u;
        const Ints usable = ((biased >= 1u) & (biased <= 126u)) | (bits == 0x3f800000u) | zero32;
        const Longs zero = __builtin_convertvector(zero32, Longs);
        Doubles lo, hi, glint_lo, glint_hi;
        if (c.shine.whole() && c.highlight.whole()) {
            // The squaring differs from whole_power's only when m and n
            // differ in length, where whole_power's last squarings are not
            // needed: each power is the same tree of products.
            Doubles shine_power, highlight_power;
            whole_powers(__builtin_convertvector(d, Doubles), c.shine.whole(), c.highlight.whole(), shine_power,
                         highlight_power);
            bracket_product(shine_power, zero, lo, hi);
            bracket_product(highlight_power, zero, glint_lo, glint_hi);
        } else {
            const Doubles log2_d = log2_of(usable & ~zero32 ? bits : Words{} + 0x3f800000u, t);
            bracket(shine * log2_d, zero, t, lo, hi);
            bracket(highlight * log2_d, zero, t, glint_lo, glint_hi);
        }
        const Doubles scale = __builtin_convertvector(coverage, Doubles);
        lit = __builtin_convertvector(scale * (base + lo), Ints);
        high = __builtin_convertvector(glint * (0.0 + glint_lo), Ints);
        const Ints settled = usable & (lit == __builtin_convertvector(scale * (base + hi), Ints)) &
                             (high == __builtin_convertvector(glint * (0.0 + glint_hi), Ints));
        const Ints open = ~settled & (coverage != 0);
        if (Isa::none(open)) return;
        for (int i = 0; i < M; ++i)
            if (open[i]) {
                lit[i] = int32_t(int64_t(coverage[i] * (base + std::pow(double(d[i]), shine))));
                high[i] = int32_t(int64_t(c.glint * std::pow(double(d[i]), highlight)));
            }
    }

    // The block of the run starting at `at`, lanes past n zero; the depths
    // from the sprite's table when it has one.
    [[gnu::always_inline]] static void inputs(const SpriteRun &run, int at, int n, Ints &coverage, Floats &nx,
                                              Floats &ny, Doubles &depth) {
        if (at + M <= n) {
            coverage = load<Ints>(run.intensity + at);
            nx = load<Floats>(run.normal_x + at);
            ny = load<Floats>(run.normal_y + at);
            depth = run.depth ? load<Doubles>(run.depth + at) : depth_of(nx, ny);
            return;
        }
        coverage = Ints{};
        nx = ny = Floats{};
        for (int i = 0; at + i < n; ++i)
            coverage[i] = run.intensity[at + i], nx[i] = run.normal_x[at + i], ny[i] = run.normal_y[at + i];
        depth = depth_of(nx, ny);
    }

    [[gnu::always_inline]] static void run_terms(const BubbleShade &c, const SpriteRun &run, int n, int32_t *lit,
                                                 int32_t *high) {
        const UnitPowerTables &t = UnitPowerTables::get();
        for (int at = 0; at < n; at += M) {
            Ints coverage, lit_block, high_block;
            Floats nx, ny;
            Doubles depth;
            inputs(run, at, n, coverage, nx, ny, depth);
            terms(c, t, coverage, nx, ny, depth, lit_block, high_block);
            for (int i = 0; i < M && at + i < n; ++i) lit[at + i] = lit_block[i], high[at + i] = high_block[i];
        }
    }

    [[gnu::always_inline]] static Ints clamp15(const Ints &value) {
        const Ints low = value < 0 ? Ints{} : value;
        return low > 32767 ? Ints{} + 32767 : low;
    }

    // blend_pixel without a reflection, on a block of pixels: 16-bit red,
    // green, blue and alpha in each 64-bit lane.
    [[gnu::always_inline]] static Longs blend(const BubbleShade &c, double strength, const Ints &coverage,
                                              const Ints &lit, const Ints &high, const Longs &pixels) {
        // k = strength * lit below 2^53, exact; w = k >> 15 is its exact
        // scaling truncated.
        const Doubles k = strength * __builtin_convertvector(lit, Doubles);
        const Doubles scaled = k * (1.0 / 32768);
        const Ints w = __builtin_convertvector(scaled > 32768.0 ? Doubles{} + 32768.0 : scaled, Ints);
        if constexpr (Isa::kChannelBlend) return Isa::channel_blend(c, w, high, coverage, pixels);
        const Ints v = 32768 - w;
        // c.red * w + target * v <= 65535 * 32768, as w + v = 32768.
        const Ints red = __builtin_convertvector(pixels & 0xffff, Ints);
        const Ints green = __builtin_convertvector(pixels >> 16 & 0xffff, Ints);
        const Ints blue = __builtin_convertvector(pixels >> 32 & 0xffff, Ints);
        const Ints alpha = __builtin_convertvector(pixels >> 48 & 0xffff, Ints);
        const Ints r = clamp15(((c.red * w + red * v) >> 15) + high);
        const Ints g = clamp15(((c.green * w + green * v) >> 15) + high);
        const Ints b = clamp15(((c.blue * w + blue * v) >> 15) + high);
        const Ints a = clamp15(alpha + w + high);
        const Longs blended = __builtin_convertvector(r, Longs) | __builtin_convertvector(g, Longs) << 16 |
                              __builtin_convertvector(b, Longs) << 32 | __builtin_convertvector(a, Longs) << 48;
        return __builtin_convertvector(coverage != 0, Longs) ? blended : pixels;
    }

    [[gnu::always_inline]] static void run_blend(const BubbleShade &c, double strength, const SpriteRun &run, int n,
                                                 PixelQv *pixels) {
        const UnitPowerTables &t = UnitPowerTables::get();
        for (int at = 0; at < n; at += M) {
            Ints coverage, lit, high;
            Floats nx, ny;
            Doubles depth;
            inputs(run, at, n, coverage, nx, ny, depth);
            if (Isa::none(coverage)) continue;  // a sprite's corner
            terms(c, t, coverage, nx, ny, depth, lit, high);
            const Longs block = blend(c, strength, coverage, lit, high, load<Longs>(pixels + at));
            std::memcpy(pixels + at, &block, sizeof block);
        }
    }

    [[gnu::always_inline]] static void run_rows(const BubbleShade &c, double strength, const SpriteRun &run,
                                                int width, int rows, PixelQv *const *image_rows, int left) {
        PixelQv pixels[kShadeRun + kShadeBlock];
        for (int y = 0; y < rows; ++y) Isa::copy(pixels + y * width, image_rows[y] + left, width);
        run_blend(c, strength, run, width * rows, pixels);
        for (int y = 0; y < rows; ++y) Isa::copy(image_rows[y] + left, pixels + y * width, width);
    }
};
