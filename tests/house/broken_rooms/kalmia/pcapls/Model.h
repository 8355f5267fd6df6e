class KALMIA_EXPORT Model {
};
