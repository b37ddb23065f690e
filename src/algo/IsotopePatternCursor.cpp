#include <vex/IsotopePatternCursor.h>

#include <vex/AveragineIsotopeModel.h>
#include <vex/AveragineIsotopeModelRefactored.h>

#include "algo/detail/HighestPeak.h"
#include "algo/detail/MerBlocks.h"
#include "algo/detail/PatternProduct.h"
#include "algo/detail/UnitPatterns.h"
#include "detail/Trace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace vex {

namespace {

// Trace sites of this file, chosen here.
constexpr detail::TraceSource kSource{"src/algo/IsotopePatternCursor"};
namespace at {
constexpr auto notAnswered = kSource.line(1);
} // namespace at

} // namespace

namespace detail {

/// The way to the pattern of the last mass: what it is after the thousands, the hundreds, the tens
/// and the ones.
class PatternPath
{
public:
    PatternPath() = default;
    Q_DISABLE_COPY_MOVE(PatternPath)
    virtual ~PatternPath() = default;
    virtual Result<int> peaksAt(double mass, QList<double> *intensities) = 0;
};

/// For the model that convolves with each block by itself.
class AveraginePath final : public PatternPath
{
public:
    explicit AveraginePath(const AveragineIsotopeModel &model)
        : m_model(model)
        , m_isComposed(m_model.m_merMass > kZero && std::isfinite(m_model.m_merMass))
    {
        for (std::size_t step = 0; step < m_steps.size(); ++step)
            m_steps[step].taps = tapsOf(m_model.m_patterns[2 - step].data());
    }

    Result<int> peaksAt(double mass, QList<double> *intensities) override
    {
        const int halves = wholeHalvesOf(mass, m_model.m_merMass);
        if (halves != m_halves || halves < 0) {
            m_halves = -1; // until all is done
            const auto blocks = m_isComposed ? merBlocksOf(mass, m_model.m_merMass) : MerBlocks();
            if (m_blocks != blocks)
                goTo(blocks);
            m_halves = halves;
        }
        intensities->resize(kPatternSize);
        std::copy_n(m_end->values(), kPatternSize, intensities->begin());
        return m_best;
    }

private:
    struct Step
    {
        Taps taps; // of one block
        int times = 0; // it is in the product
        PatternProduct product; // of no meaning when that is 0
    };

    void goTo(const MerBlocks &blocks)
    {
        bool isNew = !m_blocks || m_blocks->thousands != blocks.thousands;
        m_blocks.reset(); // until all is done
        if (isNew) {
            m_thousands.restart();
            if (blocks.thousands > 0.0)
                m_model.multiplyThousands(blocks.thousands, &m_thousands);
        }
        m_end = &m_thousands;
        const std::array times{blocks.hundreds, blocks.tens, blocks.ones};
        for (std::size_t i = 0; i < m_steps.size(); ++i) {
            Step &step = m_steps[i];
            const bool isSame = !isNew && times[i] == step.times;
            if (isNew || times[i] < step.times)
                step.times = 0;
            if (step.times == 0 && times[i] > 0) {
                step.product.assignProduct(m_end, step.taps);
                step.times = 1;
            }
            step.product.multiply(step.taps, times[i] - step.times);
            step.times = times[i];
            if (step.times > 0)
                m_end = &step.product;
            isNew = !isSame;
        }
        m_best = indexOfHighest(m_end->values(), m_end->size());
        m_blocks = blocks;
    }

    AveragineIsotopeModel m_model; // its own, so that nobody changes it
    bool m_isComposed;
    int m_halves = -1; // of mers, of the last mass, if that tells its blocks
    std::optional<MerBlocks> m_blocks; // of the last mass
    PatternProduct m_thousands;
    std::array<Step, 3> m_steps; // hundreds, tens, ones
    PatternProduct *m_end = &m_thousands; // the product of all
    int m_best = 0;
};

/// For the model that keeps a list for each number of blocks.
class UnitPath final : public PatternPath
{
public:
    explicit UnitPath(const AveragineIsotopeModelRefactored &model)
        : m_model(model)
    {
        if (m_model.m_unit)
            m_products.resize(5, m_model.m_unit->buffer());
    }

    Result<int> peaksAt(double mass, QList<double> *intensities) override
    {
        if (!m_model.m_unit) // no composition, or no capacity for one
            return m_model.peakIntensityRatiosFromMass(mass, intensities);
        const double units = m_model.m_unit->unitsOf(mass);
        if (units != m_units)
            goTo(units);
        intensities->resize(m_model.m_capacity);
        m_end->writeTo(intensities->data());
        return m_best;
    }

private:
    void goTo(double units)
    {
        const UnitCounts counts(units);
        const std::optional<UnitCounts> before = std::exchange(m_counts, std::nullopt);
        m_units = -1.0; // until all is done
        bool isNew = !before || before->thousands != counts.thousands;
        if (isNew && counts.thousands > 0.0)
            m_model.m_unit->assignThousands(counts.thousands, &m_products[1]);
        m_end = counts.thousands > 0.0 ? &m_products[1] : m_products.data();
        for (std::size_t place = 0; place < counts.digits.size(); ++place) {
            const int digit = counts.digits[place];
            isNew = isNew || before->digits[place] != digit;
            if (digit == 0)
                continue;
            ShareBuffer *const product = &m_products[place + 2];
            if (isNew)
                product->assignProduct(m_end, m_model.m_unit->factor(place, digit));
            m_end = product;
        }
        m_best = m_end->indexOfHighest();
        m_counts = counts;
        m_units = units;
    }

    AveragineIsotopeModelRefactored m_model; // its own, so that nobody changes it
    double m_units = -1.0; // of the last mass
    std::optional<UnitCounts> m_counts; // the same
    // The single peak 1.0, then after the thousands, the hundreds, the tens and the ones.
    std::vector<ShareBuffer> m_products;
    ShareBuffer *m_end = nullptr; // the product of all
    int m_best = 0;
};

} // namespace detail

IsotopePatternCursor::IsotopePatternCursor(const AveragineIsotopeModel &model)
    : m_path(std::make_unique<detail::AveraginePath>(model))
{
}

IsotopePatternCursor::IsotopePatternCursor(const AveragineIsotopeModelRefactored &model)
    : m_path(std::make_unique<detail::UnitPath>(model))
{
}

IsotopePatternCursor::~IsotopePatternCursor() = default;

Result<int> IsotopePatternCursor::peakIntensityRatiosFromMass(
    double mass, QList<double> *intensities)
{
    return detail::stamped(at::notAnswered, Q_FUNC_INFO, m_path->peaksAt(mass, intensities));
}

} // namespace vex
