Event1 Rear.ts
