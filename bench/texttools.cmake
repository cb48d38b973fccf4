find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(fmt REQUIRED)
kestrolumen_bench(texttools USES text ICU::uc ICU::i18n fmt::fmt)
