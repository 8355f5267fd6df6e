#pragma once

#include "kalmia/containers/Missing.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/Export.h"

/// A rule that tells a loop over components whether there is another one worth having, so that the loop need not know
/// the rule:
///
///   validator.SetPCAModel(&model);
///   while (validator.IsValid()) { model.NextComponent(...); model.CalculateResiduals(); }
///   validator.Done();
class KALMIA_EXPORT NCComponentValidator {
 public:
  virtual ~NCComponentValidator();
  virtual bool IsPreComponentValidator() = 0;  ///< to be asked before the next component is computed; false: after it
  virtual bool IsValid() = 0;
  virtual void Done();                         ///< the caller is through; does nothing here
};

/// A rule that looks at a PCA model, which it does not own and which may come later, or never: null.
class KALMIA_EXPORT PCAComponentValidator : public NCComponentValidator {
 public:
  explicit PCAComponentValidator(NCPCA* model) : model_(model) {}
  virtual void SetPCAModel(NCPCA* model);

 protected:
  NCPCA* model_;
};

/// A further component is worth computing as long as more than `fraction` of the sum of squares is left that the
/// model's working matrix had when the model was given.
class KALMIA_EXPORT PCA_SS_ComponentValidator : public PCAComponentValidator {
 public:
  explicit PCA_SS_ComponentValidator(NCPCA* model = nullptr, float fraction = 0.001F);

  bool IsPreComponentValidator() override;     ///< true
  /// fraction < SS / SS at the start, all in float. False without a model, and where the sum of squares at the start is
  /// at or below 1e-30 or either is missing.
  bool IsValid() override;
  /// Starts anew from what is left in this model; the former one is forgotten. Throws NCError where the sum of squares
  /// is not finite as a float: nothing of this model is valid then. The constructor does not look.
  void SetPCAModel(NCPCA* model) override;

 private:
  float fraction_;
  float initialSS_;                            ///< missing without a model
};
