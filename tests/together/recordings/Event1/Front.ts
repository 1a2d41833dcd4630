Event1 Front.ts
