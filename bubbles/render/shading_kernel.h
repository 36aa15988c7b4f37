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

// What the lanes read of the bubble, read once per run into a local the
// compiler keeps in registers: read through the BubbleShade reference, the
// fields were loaded again for every block, and min_bright / 100 divided.
struct BubbleTerms {
    explicit BubbleTerms(const BubbleShade &c)
        : base(c.min_bright / 100), glint(c.glint), shine(c.shine.exponent()), highlight(c.highlight.exponent()),
          lx(c.lx), ly(c.ly), lz(c.lz), shine_whole(c.shine.whole()), highlight_whole(c.highlight.whole()),
          red(c.red), green(c.green), blue(c.blue) {}
    double base, glint, shine, highlight;
    float lx, ly, lz;
    uint32_t shine_whole, highlight_whole;
    int32_t red, green, blue;
};

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

    // The terms with the powers bracketed: lanes the bracket leaves open
    // are marked in `open`, with their lighting term in d, for settle().
    [[gnu::always_inline]] static void bracketed_terms(const BubbleTerms &c, const UnitPowerTables &t,
                                                       const Ints &coverage, const Floats &nx, const Floats &ny,
                                                       const Doubles &depth, Ints &lit, Ints &high, Floats &d,
                                                       Ints &open) {
        const double base = c.base, glint = c.glint, shine = c.shine, highlight = c.highlight;
        d = __builtin_convertvector(
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
        if (c.shine_whole && c.highlight_whole) {
            // The squaring differs from whole_power's only when m and n
            // differ in length, where whole_power's last squarings are not
            // needed: each power is the same tree of products.
            Doubles shine_power, highlight_power;
            whole_powers(__builtin_convertvector(d, Doubles), c.shine_whole, c.highlight_whole, shine_power,
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
        open = ~settled & (coverage != 0);
    }

    // One open lane's terms through std::pow, as the scalar shader has them.
    static void settle(const BubbleTerms &c, int32_t coverage, float d, int32_t &lit, int32_t &high) {
        lit = int32_t(int64_t(coverage * (c.base + std::pow(double(d), c.shine))));
        high = int32_t(int64_t(c.glint * std::pow(double(d), c.highlight)));
    }

    [[gnu::always_inline]] static void terms(const BubbleTerms &c, const UnitPowerTables &t, const Ints &coverage,
                                             const Floats &nx, const Floats &ny, const Doubles &depth, Ints &lit,
                                             Ints &high) {
        Floats d;
        Ints open;
        bracketed_terms(c, t, coverage, nx, ny, depth, lit, high, d, open);
        if (Isa::none(open)) return;
        for (int i = 0; i < M; ++i)
            if (open[i]) settle(c, coverage[i], d[i], lit[i], high[i]);
    }

    // The block of the run starting at `at`, lanes past n zero; the depths
    // from the sprite's table when it has one. Whole: the block lies inside
    // the run. The partial block is copied lane by lane, which the compiler
    // may turn into library calls: it is kept out of the loops (see below).
    template <bool Whole>
    [[gnu::always_inline]] static void inputs(const SpriteRun &run, int at, int n, Ints &coverage, Floats &nx,
                                              Floats &ny, Doubles &depth) {
        if (Whole) {
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

    template <bool Whole>
    [[gnu::always_inline]] static void terms_block(const BubbleTerms &c, const UnitPowerTables &t,
                                                   const SpriteRun &run, int at, int n, int32_t *lit,
                                                   int32_t *high) {
        Ints coverage, lit_block, high_block;
        Floats nx, ny;
        Doubles depth;
        inputs<Whole>(run, at, n, coverage, nx, ny, depth);
        terms(c, t, coverage, nx, ny, depth, lit_block, high_block);
        for (int i = 0; i < M && at + i < n; ++i) lit[at + i] = lit_block[i], high[at + i] = high_block[i];
    }

    // The whole blocks in a loop with no call in its body, where the
    // bubble's terms and the constants stay in vector registers (a call
    // would clobber them all), then the partial block alone.
    [[gnu::always_inline]] static void run_terms(const BubbleShade &shade, const SpriteRun &run, int n,
                                                 int32_t *lit, int32_t *high) {
        const BubbleTerms c(shade);
        const UnitPowerTables &t = UnitPowerTables::get();
        int at = 0;
        for (; at + M <= n; at += M) terms_block<true>(c, t, run, at, n, lit, high);
        if (at < n) terms_block<false>(c, t, run, at, n, lit, high);
    }

    [[gnu::always_inline]] static Ints clamp15(const Ints &value) {
        const Ints low = value < 0 ? Ints{} : value;
        return low > 32767 ? Ints{} + 32767 : low;
    }

    // blend_pixel without a reflection, on a block of pixels: 16-bit red,
    // green, blue and alpha in each 64-bit lane.
    [[gnu::always_inline]] static Longs blend(const BubbleTerms &c, double strength, const Ints &coverage,
                                              const Ints &lit, const Ints &high, const Longs &pixels) {
        // k = strength * lit below 2^53, exact; w = k >> 15 is its exact
        // scaling truncated.
        const Doubles k = strength * __builtin_convertvector(lit, Doubles);
        const Doubles scaled = k * (1.0 / 32768);
        const Ints w = __builtin_convertvector(scaled > 32768.0 ? Doubles{} + 32768.0 : scaled, Ints);
        if constexpr (Isa::kChannelBlend) return Isa::channel_blend(c.red, c.green, c.blue, w, high, coverage, pixels);
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

    // A run's terms in three passes, so that neither loop holds a call
    // (std::pow for the rare open lanes, or the partial block's copies),
    // which would clobber every vector register: the bubble's terms and the
    // constants then stay in registers across the blocks.
    struct Terms {
        alignas(64) int32_t coverage[kShadeRun + kShadeBlock];
        alignas(64) int32_t lit[kShadeRun + kShadeBlock];
        alignas(64) int32_t high[kShadeRun + kShadeBlock];
        alignas(64) int32_t open[kShadeRun + kShadeBlock];
        alignas(64) float d[kShadeRun + kShadeBlock];
    };

    // The block at `at` into the terms; whether a lane is left open.
    template <bool Whole>
    [[gnu::always_inline]] static bool terms_block(const BubbleTerms &c, const UnitPowerTables &t,
                                                   const SpriteRun &run, int at, int n, Terms &out) {
        Ints coverage, lit, high, open{};
        Floats nx, ny, d{};
        Doubles depth;
        inputs<Whole>(run, at, n, coverage, nx, ny, depth);
        if (!Isa::none(coverage)) bracketed_terms(c, t, coverage, nx, ny, depth, lit, high, d, open);
        std::memcpy(out.coverage + at, &coverage, sizeof coverage);
        std::memcpy(out.lit + at, &lit, sizeof lit);
        std::memcpy(out.high + at, &high, sizeof high);
        std::memcpy(out.open + at, &open, sizeof open);
        std::memcpy(out.d + at, &d, sizeof d);
        return !Isa::none(open);
    }

    [[gnu::always_inline]] static void run_blend(const BubbleShade &shade, double strength, const SpriteRun &run,
                                                 int n, PixelQv *pixels) {
        const BubbleTerms c(shade);
        const UnitPowerTables &t = UnitPowerTables::get();
        Terms terms;
        bool any_open = false;
        int at = 0;
        for (; at + M <= n; at += M) any_open |= terms_block<true>(c, t, run, at, n, terms);
        if (at < n) any_open |= terms_block<false>(c, t, run, at, n, terms);
        if (any_open)
            for (int i = 0; i < n; ++i)
                if (terms.open[i]) settle(c, terms.coverage[i], terms.d[i], terms.lit[i], terms.high[i]);
        // Lanes past n have no coverage: their pixels are rewritten unchanged.
        for (at = 0; at < n; at += M) {
            const Ints coverage = load<Ints>(terms.coverage + at);
            if (Isa::none(coverage)) continue;  // a sprite's corner
            const Longs block = blend(c, strength, coverage, load<Ints>(terms.lit + at), load<Ints>(terms.high + at),
                                      load<Longs>(pixels + at));
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
